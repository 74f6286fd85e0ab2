#include "Tarnwick/Toolkit/Widgets/TabStrip.h"

#include "Tarnwick/Toolkit/Widgets/TabBarView.h"

#include <QMouseEvent>

#include <algorithm>

namespace tw {

namespace {

/// An icon, the button that closes, and some letters of the title. Tabs that would be narrower are in the menu.
constexpr int leastWidth = 110;

/// Of a long name the beginning and the end are enough, and leave room to others.
constexpr int largestWidth = 200;

} // namespace

TabStrip::TabStrip(QWidget *parent) : QTabBar(parent)
{
    setDocumentMode(true);
    setDrawBase(false);
    setExpanding(false);
    setMovable(true);
    setElideMode(Qt::ElideMiddle);
    setUsesScrollButtons(true);
    setSelectionBehaviorOnRemove(QTabBar::SelectLeftTab);
    setFocusPolicy(Qt::NoFocus);
    setIconSize({14, 14});
}

int TabStrip::wantedWidth() const
{
    auto width = 0;
    for (int index = 0; index < count(); ++index)
        width += tabSizeHint(index).width();
    return width;
}

QSize TabStrip::sizeHint() const
{
    return {wantedWidth(), TabBarView::barHeight};
}

QSize TabStrip::minimumSizeHint() const
{
    return {leastWidth, TabBarView::barHeight};
}

QSize TabStrip::tabSizeHint(int index) const
{
    return {std::min(QTabBar::tabSizeHint(index).width(), largestWidth), TabBarView::barHeight};
}

QSize TabStrip::minimumTabSizeHint(int index) const
{
    return {std::min(tabSizeHint(index).width(), leastWidth), TabBarView::barHeight};
}

void TabStrip::mouseReleaseEvent(QMouseEvent *event)
{
    auto const index = tabAt(event->position().toPoint());
    if (event->button() == Qt::MiddleButton && index >= 0)
        Q_EMIT tabCloseRequested(index);
    else
        QTabBar::mouseReleaseEvent(event);
}

} // namespace tw
