#include "Tarnwick/Table/NewName.h"

namespace tw {

namespace {

/// The longest name that Linux takes, and with it nearly every host.
constexpr std::size_t longestNameBytes = 255;

} // namespace

std::optional<std::string> objectionToNewName(std::string_view name)
{
    if (name.empty())
        return "A name is needed.";
    if (name == "." || name == "..")
        return "“" + std::string(name) + "” already stands for another folder.";
    if (name.contains('/'))
        return "A name cannot have a “/” in it.";
    if (name.contains('\0'))
        return "A name cannot have a zero byte in it.";
    if (name.size() > longestNameBytes)
        return "This name is too long: it has " + std::to_string(name.size()) + " bytes, and " +
               std::to_string(longestNameBytes) + " are allowed.";
    return std::nullopt;
}

} // namespace tw
