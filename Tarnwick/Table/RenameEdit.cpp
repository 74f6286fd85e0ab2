#include "Tarnwick/Table/RenameEdit.h"

#include "TWCore/Model/Trimmed.h"

#include <utility>

namespace tw {

RenameEdit::RenameEdit(std::string bytes, Fmt::IsDirectory isDirectory)
    : name(std::move(bytes)), selected(Fmt::splitExtension(name, isDirectory).base)
{
}

std::optional<std::string> RenameEdit::newName(std::string_view typed) const
{
    auto const wanted = trimmed(typed);
    if (typed == name || wanted.empty() || wanted == name)
        return std::nullopt;
    return std::string(wanted);
}

} // namespace tw
