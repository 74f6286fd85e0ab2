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

    /// The exact bytes of the name before the edit.
    std::string const &original() const noexcept { return name; }

    /// What the field begins with: the name as text.
    std::string const &shown() const noexcept { return text; }

    /// The part of `shown` that is selected at first: all but the extension.
    std::string const &base() const noexcept { return selected; }

    /// The name that a text in the field stands for, without white space around it. Nothing: the entry keeps its name.
    /// So does one whose field was not touched, also where its text is not the name to the byte.
    std::optional<std::string> newName(std::string_view typed) const;

private:
    std::string name;
    std::string text;
    std::string selected;
};

} // namespace tw
