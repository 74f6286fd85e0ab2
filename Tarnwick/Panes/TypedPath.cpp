#include "Tarnwick/Panes/TypedPath.h"

namespace tw {

namespace {

std::string_view trimmed(std::string_view text)
{
    constexpr std::string_view blanks = " \t\r\n";
    auto const first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

/// Appends the components of `path` to the absolute `result`, which has no slash at its end and is empty at the root.
void walk(std::string &result, std::string_view path)
{
    while (!path.empty()) {
        auto const end = std::min(path.find('/'), path.size());
        auto const component = path.substr(0, end);
        path.remove_prefix(std::min(end + 1, path.size()));
        if (component.empty() || component == ".")
            continue;
        if (component == "..")
            result.resize(result.empty() ? 0 : result.rfind('/')); // above the root is the root
        else
            result.append("/").append(component);
    }
}

} // namespace

std::optional<std::string> typedPath(std::string_view text, std::string_view folder, std::string_view home)
{
    text = trimmed(text);
    if (text.empty())
        return std::nullopt;
    std::string result;
    if (text == "~" || text.starts_with("~/")) {
        walk(result, home);
        text.remove_prefix(1);
    } else if (!text.starts_with('/')) {
        walk(result, folder);
    }
    walk(result, text);
    return result.empty() ? "/" : result;
}

} // namespace tw
