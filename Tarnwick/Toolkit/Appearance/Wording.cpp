#include "Tarnwick/Toolkit/Appearance/Wording.h"

#include "TWCore/Model/DisplayText.h"

#include <algorithm>
#include <iterator>

namespace tw::Wording {

namespace {

struct Words {
    std::string_view key;
    std::string_view shown;
};

constexpr Words catalogue[] = {
    {"This Mac", "This Computer"},
    {"auto refresh off — ⌘R to reload", "auto refresh off — Ctrl+R to reload"},
    {"nothing on this Mac opens %@", "nothing on this computer opens %@"},
    {"not an image this Mac can decode", "not an image this computer can decode"},
    {"only archives on this Mac can be added to", "only archives on this computer can be added to"},
    {"only archives on this Mac can be changed", "only archives on this computer can be changed"},
    {"read from this Mac", "read from this computer"},
    {"write to this Mac", "write to this computer"},
};

std::string_view wordsFor(std::string_view key)
{
    auto const *const found = std::ranges::find(catalogue, key, &Words::key);
    return found != std::end(catalogue) ? found->shown : key;
}

} // namespace

QString shown(std::string_view text)
{
    auto const words = wordsFor(text);
    return QString::fromUtf8(words.data(), static_cast<qsizetype>(words.size()));
}

QString shownInLines(Text const &text)
{
    return QString::fromStdString(text.inWordsOf(wordsFor));
}

QString shown(Text const &text)
{
    return QString::fromStdString(onOneLine(text.inWordsOf(wordsFor)));
}

} // namespace tw::Wording
