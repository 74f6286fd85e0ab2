#include "Tarnwick/Toolkit/Appearance/Palettes.h"

#include "Tarnwick/Toolkit/Appearance/Contrast.h"

namespace tw::Palettes {

namespace {

/// What a scheme is made of; the rest follows from it.
struct Ink {
    QColor window;
    QColor base;
    QColor alternateBase;
    QColor text;
    QColor button;
    QColor highlight;
    QColor highlightedText;
    QColor link;
    QColor linkVisited;
    QColor toolTip;
    QColor light; ///< the bright edge of a raised thing
    QColor dark;  ///< its dark edge, and frames
};

constexpr double placeholderShare = 0.55;
constexpr double disabledShare = 0.45;
constexpr double inactiveHighlightShare = 0.5;

/// Of the text's colour in an edge on dark ground.
constexpr double edgeShare = 0.5;

void setShades(QPalette &palette, Ink const &ink)
{
    palette.setColor(QPalette::Light, ink.light);
    palette.setColor(QPalette::Midlight, blend(ink.light, ink.button, 0.5));
    palette.setColor(QPalette::Mid, blend(ink.dark, ink.button, 0.5));
    palette.setColor(QPalette::Dark, ink.dark);
    palette.setColor(QPalette::Shadow, blend(QColor(0, 0, 0), ink.dark, 0.6));
}

void setDisabled(QPalette &palette, Ink const &ink)
{
    for (auto const role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::BrightText,
                            QPalette::HighlightedText, QPalette::Link, QPalette::LinkVisited, QPalette::ToolTipText}) {
        auto const normal = palette.color(QPalette::Active, role);
        palette.setColor(QPalette::Disabled, role, blend(normal, ink.window, disabledShare));
    }
    palette.setColor(QPalette::Disabled, QPalette::PlaceholderText,
                     blend(ink.text, ink.window, placeholderShare * disabledShare));
    palette.setColor(QPalette::Disabled, QPalette::Base, blend(ink.base, ink.window, 0.5));
    palette.setColor(QPalette::Disabled, QPalette::Highlight, blend(ink.dark, ink.window, 0.5));
}

QPalette paletteOf(Ink const &ink)
{
    QPalette palette;
    palette.setColor(QPalette::Window, ink.window);
    palette.setColor(QPalette::WindowText, ink.text);
    palette.setColor(QPalette::Base, ink.base);
    palette.setColor(QPalette::AlternateBase, ink.alternateBase);
    palette.setColor(QPalette::Text, ink.text);
    palette.setColor(QPalette::PlaceholderText, blend(ink.text, ink.base, placeholderShare));
    palette.setColor(QPalette::Button, ink.button);
    palette.setColor(QPalette::ButtonText, ink.text);
    palette.setColor(QPalette::BrightText, QColor(255, 96, 96));
    palette.setColor(QPalette::Highlight, ink.highlight);
    palette.setColor(QPalette::HighlightedText, ink.highlightedText);
    palette.setColor(QPalette::Link, ink.link);
    palette.setColor(QPalette::LinkVisited, ink.linkVisited);
    palette.setColor(QPalette::ToolTipBase, ink.toolTip);
    palette.setColor(QPalette::ToolTipText, ink.text);
    setShades(palette, ink);
    setDisabled(palette, ink);
    // A window in the background: the same, with a calmer highlight.
    palette.setColor(QPalette::Inactive, QPalette::Highlight, blend(ink.highlight, ink.button, inactiveHighlightShare));
    palette.setColor(QPalette::Inactive, QPalette::HighlightedText, ink.text);
    return palette;
}

} // namespace

QPalette dark()
{
    return paletteOf({
        .window = QColor(0x2b, 0x2d, 0x31),
        .base = QColor(0x1e, 0x1f, 0x22),
        .alternateBase = QColor(0x23, 0x25, 0x29),
        .text = QColor(0xdf, 0xe1, 0xe5),
        .button = QColor(0x3a, 0x3d, 0x42),
        .highlight = QColor(0x2f, 0x65, 0xb8),
        .highlightedText = QColor(0xff, 0xff, 0xff),
        .link = QColor(0x6f, 0xae, 0xf5),
        .linkVisited = QColor(0xb3, 0x9d, 0xf0),
        .toolTip = QColor(0x3a, 0x3d, 0x42),
        .light = QColor(0x50, 0x54, 0x5a),
        .dark = QColor(0x17, 0x18, 0x1a),
    });
}

QPalette light()
{
    return paletteOf({
        .window = QColor(0xee, 0xf0, 0xf2),
        .base = QColor(0xff, 0xff, 0xff),
        .alternateBase = QColor(0xf6, 0xf8, 0xfa),
        .text = QColor(0x1d, 0x20, 0x25),
        .button = QColor(0xe6, 0xe8, 0xeb),
        .highlight = QColor(0x2a, 0x6c, 0xc8),
        .highlightedText = QColor(0xff, 0xff, 0xff),
        .link = QColor(0x1a, 0x5f, 0xb4),
        .linkVisited = QColor(0x6b, 0x4f, 0xb3),
        .toolTip = QColor(0xff, 0xfd, 0xe8),
        .light = QColor(0xff, 0xff, 0xff),
        .dark = QColor(0xb4, 0xb9, 0xc0),
    });
}

bool isDark(QPalette const &palette)
{
    return palette.color(QPalette::WindowText).lightnessF() > palette.color(QPalette::Window).lightnessF();
}

QColor edge(QPalette const &palette)
{
    if (!isDark(palette))
        return palette.color(QPalette::Mid);
    return blend(palette.color(QPalette::WindowText), palette.color(QPalette::Base), edgeShare);
}

} // namespace tw::Palettes
