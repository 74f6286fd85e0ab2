#pragma once

#include <QProxyStyle>

namespace tw {

/// The style that the desktop gives, with two changes.
///
/// Tool tips wait longer: over a list that is read with the mouse, those of the usual delay are in the way. Check boxes
/// and menus of Fusion get an outline that is seen on dark ground too: its own is darker than the window, so that an
/// empty box in a list, and the end of a menu, cannot be seen.
class ProgramStyle final : public QProxyStyle {
public:
    /// `milliseconds` pass before a tool tip appears.
    explicit ProgramStyle(int milliseconds) : delay(milliseconds) {}

    int styleHint(StyleHint hint, QStyleOption const *option, QWidget const *widget,
                  QStyleHintReturn *returned) const override;
    void drawPrimitive(PrimitiveElement element, QStyleOption const *option, QPainter *painter,
                       QWidget const *widget) const override;

private:
    int const delay;
};

} // namespace tw
