#include "TWCore/Shell/FileSearch.h"

#include "TWCore/Model/Trimmed.h"

#include <charconv>

namespace tw::FileSearch {

namespace {

constexpr std::string_view cannot = "cannot";
constexpr std::string_view none = "none";

} // namespace

std::optional<std::string> text(ShellDialect dialect, std::string_view path, std::string_view bytes, Part part,
                                Which which)
{
    using namespace std::string_view_literals;
    if (dialect != ShellDialect::posix || bytes.empty() || bytes.find_first_of("\n\0"sv) != std::string_view::npos)
        return std::nullopt;
    // Not every grep has the offset of a match, and one that has not is asked for nothing else.
    std::string const grep = "LC_ALL=C grep -obUaF";
    return "if [ \"$(printf 'ax\\n' | " + grep + " x 2>/dev/null)\" = 1:x ]; then r=$(tail -c +" +
           std::to_string(part.from + 1) + " " + quotePath(dialect, path) + " 2>/dev/null | head -c " +
           std::to_string(part.to - part.from) + " | " + grep + (which == Which::first ? " -m 1" : "") + " -e " +
           quote(dialect, bytes) + " 2>/dev/null | " + (which == Which::first ? "head" : "tail") +
           " -n 1 | cut -d : -f 1); echo \"${r:-" + std::string(none) + "}\"; else echo " + std::string(cannot) +
           "; fi";
}

Answer answer(std::string_view output, Part part)
{
    auto const words = trimmed(output);
    if (words == none)
        return {.isKnown = true};
    std::int64_t offset = 0;
    auto const *const end = words.data() + words.size();
    auto const [stop, error] = std::from_chars(words.data(), end, offset);
    if (words.empty() || error != std::errc() || stop != end || offset < 0 || offset >= part.to - part.from)
        return {};
    return {.isKnown = true, .offset = part.from + offset};
}

} // namespace tw::FileSearch
