#include "TWCore/Model/Text.h"

#include <algorithm>

namespace tw {

namespace {

bool endsPlace(char letter)
{
    return letter == '@' || (letter >= 'a' && letter <= 'z');
}

} // namespace

Text Text::ofWords(std::string words)
{
    Text text(std::move(words));
    text.kind = Kind::words;
    return text;
}

Text Text::sequence(std::vector<Text> parts)
{
    Text text;
    for (std::size_t i = 0; i < parts.size(); ++i)
        text.key += "%@";
    text.arguments = std::move(parts);
    return text;
}

std::string Text::inWordsOf(Catalogue const &catalogue) const
{
    if (kind == Kind::verbatim)
        return key;
    if (kind == Kind::words)
        return std::string(catalogue(key));
    std::string filled;
    std::string_view rest = catalogue(key);
    auto argument = arguments.begin();
    for (auto sign = rest.find('%'); sign != std::string_view::npos; sign = rest.find('%')) {
        filled += rest.substr(0, sign);
        rest.remove_prefix(sign + 1);
        if (rest.starts_with('%')) {
            filled += '%';
            rest.remove_prefix(1);
            continue;
        }
        if (argument != arguments.end())
            filled += (argument++)->inWordsOf(catalogue);
        auto const end = std::ranges::find_if(rest, endsPlace);
        rest.remove_prefix(std::min(static_cast<std::size_t>(end - rest.begin()) + 1, rest.size()));
    }
    return filled.append(rest);
}

std::string Text::english() const
{
    return inWordsOf([](std::string_view key) { return key; });
}

} // namespace tw
