#pragma once

#include "Tarnwick/Format/Fmt.h"

#include <optional>
#include <string>
#include <string_view>

namespace tw {

/// The name of one entry while a person edits it, and what the text in the field means in the end.
class RenameEdit {
public:
    RenameEdit(std::string name, Fmt::IsDirectory isDirectory);

    /// The exact bytes of the name before the edit. The field begins with them.
    std::string const &original() const noexcept { return name; }

    /// The part of `original` that is selected at first: all but the extension.
    std::string const &base() const noexcept { return selected; }

    /// The name that the bytes in the field stand for, without white space around it. Nothing: the entry keeps its
    /// name. So does one whose field was not touched, also where its name has white space around it.
    std::optional<std::string> newName(std::string_view typed) const;

private:
    std::string name;
    std::string selected;
};

} // namespace tw
