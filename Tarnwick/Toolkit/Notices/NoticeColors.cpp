#include "Tarnwick/Toolkit/Notices/NoticeColors.h"

#include "Tarnwick/Toolkit/Appearance/Contrast.h"
#include "Tarnwick/Toolkit/Appearance/Palettes.h"

namespace tw {

namespace {

/// What WCAG asks of text, and of signs.
constexpr double textContrast = 4.5;
constexpr double signContrast = 3.0;

/// Enough of a colour to stand out from the rows.
constexpr double tintOnDark = 0.28;
constexpr double tintOnLight = 0.16;

constexpr QColor amber(0xe0, 0x8a, 0x00);

} // namespace

NoticeColors NoticeColors::of(PaneNotice::Kind kind, QPalette const &palette)
{
    auto const tint = kind == PaneNotice::Kind::failure ? amber : palette.color(QPalette::Highlight);
    auto const share = Palettes::isDark(palette) ? tintOnDark : tintOnLight;
    auto const ground = blend(tint, palette.color(QPalette::Base), share);
    return {.ground = ground,
            .text = readableOn(ground, palette.color(QPalette::Text), textContrast),
            .sign = readableOn(ground, tint, signContrast)};
}

} // namespace tw
