#include "TWEngine/Transfer/CopiedLines.h"

#include <algorithm>

namespace tw {

namespace {

/// What the line of an entry in the folder of this line begins with; empty for a line in an unusual form.
std::string beginningOfContent(std::string const &line)
{
    auto const end = line.find("' -> ");
    return end == std::string::npos ? std::string() : line.substr(0, end) + "/";
}

} // namespace

void CopiedLines::take(std::string_view output)
{
    taken += static_cast<std::int64_t>(output.size());
    while (!output.empty()) {
        auto const end = output.find('\n');
        line += output.substr(0, std::min({end, output.size(), mostOfALine - line.size()}));
        if (end == std::string_view::npos)
            return;
        endLine();
        output.remove_prefix(end + 1);
    }
}

void CopiedLines::endLine()
{
    if (!previous.empty()) {
        auto const content = beginningOfContent(previous);
        bool const wasFolder = !content.empty() && line.starts_with(content);
        done += wasFolder ? 0 : 1;
    }
    previous = std::exchange(line, {});
}

} // namespace tw
