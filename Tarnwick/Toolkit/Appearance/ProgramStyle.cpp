#include "Tarnwick/Toolkit/Appearance/ProgramStyle.h"

#include "Tarnwick/Toolkit/Appearance/Palettes.h"

#include <QPainter>
#include <QStyleOption>

namespace tw {

namespace {

/// True for what Fusion outlines darker than its ground, also where the ground is dark.
bool hasEdge(QStyle::PrimitiveElement element, QStyle::State state)
{
    if (element == QStyle::PE_PanelMenu || element == QStyle::PE_FrameMenu)
        return true;
    // One with the keyboard has an outline of its own colour.
    auto const hasKeyboard = state & QStyle::State_HasFocus && state & QStyle::State_KeyboardFocusChange;
    return element == QStyle::PE_IndicatorCheckBox && !hasKeyboard;
}

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
    if (!isFusion || !hasEdge(element, option->state) || !Palettes::isDark(option->palette))
        return;
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing, false);
    painter->setBrush(Qt::NoBrush);
    painter->setPen(Palettes::edge(option->palette));
    painter->drawRect(option->rect.adjusted(0, 0, -1, -1));
    painter->restore();
}

} // namespace tw
