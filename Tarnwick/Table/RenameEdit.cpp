#include "Tarnwick/Table/RenameEdit.h"

#include "TWCore/Model/DisplayText.h"
#include "TWCore/Model/Trimmed.h"

#include <utility>

namespace tw {

RenameEdit::RenameEdit(std::string bytes, Fmt::IsDirectory isDirectory)
    : name(std::move(bytes)), text(repaired(name)), selected(Fmt::splitExtension(text, isDirectory).base)
{
}

std::optional<std::string> RenameEdit::newName(std::string_view typed) const
{
    auto const wanted = trimmed(typed);
    if (typed == text || wanted.empty() || wanted == name)
        return std::nullopt;
    return std::string(wanted);
}

} // namespace tw
