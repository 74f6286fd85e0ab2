#include "Tarnwick/Toolkit/Appearance/PaneColors.h"

#include "Tarnwick/Toolkit/Appearance/Contrast.h"
#include "Tarnwick/Toolkit/Appearance/Palettes.h"

namespace tw {

namespace {

/// What WCAG asks of text, and of large and bold things. The second is for the cursor's row: many desktops have white
/// on a highlight that gives it less than the first, and black there would look like a mistake.
constexpr double textContrast = 4.5;
constexpr double cursorContrast = 3.0;

/// Details step back behind the name.
constexpr double detailShare = 0.72;

struct Accents {
    QColor folder;
    QColor marked;
    QColor markedOnCursor;
};

// Marked names are yellow on dark and red on light, as in every file manager of this kind.
Accents accentsOn(QPalette const &palette)
{
    if (Palettes::isDark(palette))
        return {QColor(0x9c, 0xc8, 0xff), QColor(0xff, 0xc8, 0x3d), QColor(0xff, 0xdc, 0x6b)};
    return {QColor(0x1b, 0x4f, 0x91), QColor(0xc0, 0x1c, 0x28), QColor(0xff, 0xe0, 0x70)};
}

} // namespace

PaneColors PaneColors::of(QPalette const &palette)
{
    auto const base = palette.color(QPalette::Base);
    auto const text = palette.color(QPalette::Text);
    auto const highlight = palette.color(QPalette::Highlight);
    auto const accents = accentsOn(palette);
    return {
        .name = text,
        .folder = readableOn(base, accents.folder, textContrast),
        .detail = readableOn(base, blend(text, base, detailShare), textContrast),
        .marked = readableOn(base, accents.marked, textContrast),
        .cursor = highlight,
        .onCursor = readableOn(highlight, palette.color(QPalette::HighlightedText), cursorContrast),
        .markedOnCursor = readableOn(highlight, accents.markedOnCursor, cursorContrast),
    };
}

} // namespace tw
