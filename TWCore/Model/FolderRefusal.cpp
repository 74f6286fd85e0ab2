#include "TWCore/Model/FolderRefusal.h"

#include <array>
#include <utility>

namespace tw {

namespace {

constexpr std::array<std::pair<std::string_view, std::string_view>, 4> words{{
    {"Permission denied", "permission denied"},
    {"No such file or directory", "no such folder"},
    {"Not a directory", notAFolder},
    {"Too many levels of symbolic links", "too many links"},
}};

} // namespace

std::string folderRefusal(std::string_view systemText)
{
    for (auto const &[text, refusal] : words) {
        if (systemText == text)
            return std::string(refusal);
    }
    if (systemText.empty())
        return "cannot be read";
    std::string refusal(systemText);
    if (refusal.front() >= 'A' && refusal.front() <= 'Z')
        refusal.front() = static_cast<char>(refusal.front() - 'A' + 'a');
    return refusal;
}

} // namespace tw
