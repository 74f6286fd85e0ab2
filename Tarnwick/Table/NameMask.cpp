#include "Tarnwick/Table/NameMask.h"

#include <algorithm>

#include <fnmatch.h>

namespace tw {

namespace {

std::vector<std::string> piecesOf(std::string_view text, std::string_view separators)
{
    std::vector<std::string> pieces;
    for (;;) {
        auto const end = text.find_first_of(separators);
        pieces.emplace_back(text.substr(0, end));
        if (end == std::string_view::npos)
            return pieces;
        text.remove_prefix(end + 1);
    }
}

} // namespace

NameMask::NameMask(std::string_view text)
{
    for (auto &piece : piecesOf(text, " ;")) {
        if (piece.empty())
            continue;
        // Most masks have no other sign than the star. fnmatch takes ten times as long, since it knows all of them and
        // decodes every name.
        auto const hasOtherSigns = piece.find_first_of("?[\\") != std::string::npos;
        auto literals = hasOtherSigns ? std::vector<std::string>() : piecesOf(piece, "*");
        patterns.push_back({std::move(piece), std::move(literals)});
    }
}

bool NameMask::matches(std::string const &name) const
{
    return std::ranges::any_of(patterns, [&](Pattern const &pattern) {
        return pattern.literals.empty() ? fnmatch(pattern.text.c_str(), name.c_str(), 0) == 0
                                        : matchesLiterals(pattern, name);
    });
}

bool NameMask::matchesLiterals(Pattern const &pattern, std::string_view name)
{
    auto const &first = pattern.literals.front();
    auto const &last = pattern.literals.back();
    if (pattern.literals.size() == 1)
        return name == first;
    if (name.size() < first.size() + last.size() || !name.starts_with(first) || !name.ends_with(last))
        return false;
    name = name.substr(first.size(), name.size() - first.size() - last.size());
    for (std::size_t i = 1; i + 1 < pattern.literals.size(); ++i) {
        auto const found = name.find(pattern.literals[i]);
        if (found == std::string_view::npos)
            return false;
        name.remove_prefix(found + pattern.literals[i].size());
    }
    return true;
}

} // namespace tw
