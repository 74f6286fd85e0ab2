#include "Tarnwick/Toolkit/Appearance/Wording.h"

namespace tw::Wording {

namespace {

struct Words {
    std::string_view key;
    QLatin1StringView shown;
};

constexpr Words catalogue[] = {
    {"This Mac", QLatin1StringView("This Computer")},
};

} // namespace

QString shown(std::string_view text)
{
    for (auto const &words : catalogue) {
        if (words.key == text)
            return words.shown;
    }
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

} // namespace tw::Wording
