#include "Tarnwick/Toolkit/Appearance/ProgramStyle.h"

#include "Tarnwick/Toolkit/Appearance/Contrast.h"
#include "Tarnwick/Toolkit/Appearance/Palettes.h"

#include <QPainter>
#include <QStyleOption>

namespace tw {

namespace {

/// Of the text's colour in the outline of a check box.
constexpr double outlineShare = 0.5;

} // namespace

int ProgramStyle::styleHint(StyleHint hint, QStyleOption const *option, QWidget const *widget,
                            QStyleHintReturn *returned) const
{
    return hint == SH_ToolTip_WakeUpDelay ? delay : QProxyStyle::styleHint(hint, option, widget, returned);
}

void ProgramStyle::drawPrimitive(PrimitiveElement element, QStyleOption const *option, QPainter *painter,
                                 QWidget const *widget) const
{
    QProxyStyle::drawPrimitive(element, option, painter, widget);
    auto const isFusion = baseStyle()->name().compare(QLatin1String("fusion"), Qt::CaseInsensitive) == 0;
    // One with the keyboard has an outline of its own colour.
    auto const hasKeyboard = option->state & State_HasFocus && option->state & State_KeyboardFocusChange;
    if (element != PE_IndicatorCheckBox || !isFusion || hasKeyboard || !Palettes::isDark(option->palette))
        return;
    auto const &colors = option->palette;
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing, false);
    painter->setBrush(Qt::NoBrush);
    painter->setPen(blend(colors.color(QPalette::WindowText), colors.color(QPalette::Base), outlineShare));
    painter->drawRect(option->rect.adjusted(0, 0, -1, -1));
    painter->restore();
}

} // namespace tw
