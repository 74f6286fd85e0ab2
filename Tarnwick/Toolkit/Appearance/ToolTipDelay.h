#pragma once

#include <QProxyStyle>

namespace tw {

/// The style that the desktop gives, with tool tips that wait longer: over a list that is read with the mouse, those of
/// the usual delay are in the way.
class ToolTipDelay final : public QProxyStyle {
public:
    /// `milliseconds` pass before a tool tip appears.
    explicit ToolTipDelay(int milliseconds) : delay(milliseconds) {}

    int styleHint(StyleHint hint, QStyleOption const *option, QWidget const *widget,
                  QStyleHintReturn *returned) const override
    {
        return hint == SH_ToolTip_WakeUpDelay ? delay : QProxyStyle::styleHint(hint, option, widget, returned);
    }

private:
    int const delay;
};

} // namespace tw
