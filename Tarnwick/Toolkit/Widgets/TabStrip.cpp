#include "Tarnwick/Toolkit/Widgets/TabStrip.h"

#include "Tarnwick/Toolkit/Appearance/SymbolIcons.h"
#include "Tarnwick/Toolkit/Appearance/Wording.h"
#include "Tarnwick/Toolkit/Widgets/TabBarView.h"

#include <QMouseEvent>
#include <QToolButton>

#include <algorithm>

namespace tw {

namespace {

/// An icon, the button that closes, and some letters of the title. Tabs that would be narrower are in the menu.
constexpr int leastWidth = 110;

/// Of a long name the beginning and the end are enough, and leave room to others.
constexpr int largestWidth = 200;

constexpr int closeButtonSize = 16;
constexpr int closeIconSize = 10;

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

void TabStrip::setClosable(bool closable)
{
    for (int index = 0; index < count(); ++index) {
        auto *const button = tabButton(index, RightSide);
        if (closable == (button != nullptr))
            continue;
        setTabButton(index, RightSide, closable ? makeCloseButton() : nullptr);
        if (button)
            button->deleteLater();
    }
}

QWidget *TabStrip::makeCloseButton()
{
    auto *const button = new QToolButton(this);
    button->setAutoRaise(true);
    button->setFocusPolicy(Qt::NoFocus);
    button->setFixedSize(closeButtonSize, closeButtonSize);
    button->setIconSize({closeIconSize, closeIconSize});
    button->setIcon(SymbolIcons::ownIcon("close"));
    auto const name = Wording::shown("Close Tab");
    button->setToolTip(name);
    button->setAccessibleName(name);
    connect(button, &QToolButton::clicked, this, [this, button] {
        for (int index = 0; index < count(); ++index) {
            if (tabButton(index, RightSide) == button)
                Q_EMIT tabCloseRequested(index);
        }
    });
    return button;
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
