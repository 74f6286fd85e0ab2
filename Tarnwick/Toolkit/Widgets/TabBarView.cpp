#include "Tarnwick/Toolkit/Widgets/TabBarView.h"

#include "Tarnwick/Toolkit/Appearance/Wording.h"
#include "Tarnwick/Toolkit/Widgets/TabStrip.h"

#include <QContextMenuEvent>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QMenu>
#include <QMouseEvent>
#include <QToolButton>

namespace tw {

namespace {

QString withoutMnemonic(QString text)
{
    return text.replace(QLatin1Char('&'), QStringLiteral("&&"));
}

/// Plain text, whatever a name contains.
QString plainToolTip(QString const &text)
{
    return QStringLiteral("<qt>%1</qt>").arg(text.toHtmlEscaped());
}

QToolButton *barButton(QString const &name, QString const &sign, QWidget *parent)
{
    auto *const button = new QToolButton(parent);
    button->setAutoRaise(true);
    button->setFocusPolicy(Qt::NoFocus);
    button->setFixedSize(TabBarView::barHeight, TabBarView::barHeight);
    button->setText(sign);
    button->setToolTip(name);
    button->setAccessibleName(name);
    return button;
}

} // namespace

TabBarView::TabBarView(QWidget *parent)
    : QWidget(parent),
      tabs(new TabStrip(this)),
      newTab(barButton(Wording::shown("New Tab"), QStringLiteral("+"), this)),
      overflow(barButton(Wording::shown("All Tabs"), QStringLiteral("▾"), this))
{
    setFixedHeight(barHeight);
    tabs->setAccessibleName(Wording::shown("Tabs"));
    overflow->hide();
    connectTabs();
}

void TabBarView::connectTabs()
{
    connect(tabs, &QTabBar::currentChanged, this, [this](int index) {
        if (!isShowing && onSelect)
            onSelect(index);
    });
    // A click on the tab that is selected already gives its rows the keyboard too.
    connect(tabs, &QTabBar::tabBarClicked, this, [this](int index) {
        if (index == tabs->currentIndex() && QGuiApplication::mouseButtons() != Qt::MiddleButton && onSelect)
            onSelect(index);
    });
    connect(tabs, &QTabBar::tabCloseRequested, this, [this](int index) {
        if (onClose)
            onClose(index);
    });
    connect(tabs, &QTabBar::tabMoved, this, [this](int from, int to) {
        if (!isShowing && onReorder)
            onReorder(from, to);
    });
    connect(newTab, &QToolButton::clicked, this, [this] {
        if (onNew)
            onNew();
    });
    connect(overflow, &QToolButton::clicked, this, [this] { listTabs(); });
}

void TabBarView::showTabs(std::vector<Item> const &items, int selected)
{
    isShowing = true;
    auto const count = static_cast<int>(items.size());
    while (tabs->count() > count)
        tabs->removeTab(tabs->count() - 1);
    while (tabs->count() < count)
        tabs->addTab(QString());
    for (int index = 0; index < count; ++index) {
        auto const &item = items[static_cast<std::size_t>(index)];
        // What is set lays all tabs out anew, also under a mouse that drags one.
        if (auto const text = withoutMnemonic(item.title); tabs->tabText(index) != text) {
            tabs->setTabText(index, text);
            tabs->setAccessibleTabName(index, item.title);
        }
        tabs->setTabToolTip(index, plainToolTip(item.toolTip));
        auto const hasIcon = !tabs->tabIcon(index).isNull();
        if (hasIcon != item.isRemote)
            tabs->setTabIcon(index, item.isRemote ? QIcon(QStringLiteral(":/icons/host.svg")) : QIcon());
    }
    tabs->setClosable(count > 1); // the only one stays
    tabs->setCurrentIndex(selected);
    isShowing = false;
    placeButtons();
}

void TabBarView::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    placeButtons();
}

/// The plus stands behind the last tab, as long as there is room; the menu of all tabs at the very end.
void TabBarView::placeButtons()
{
    auto const wanted = tabs->wantedWidth();
    auto const fits = wanted + barHeight <= width();
    auto const room = width() - (fits ? 1 : 2) * barHeight;
    overflow->setVisible(!fits);
    tabs->setGeometry(0, 0, std::min(wanted, room), barHeight);
    newTab->move(tabs->width(), 0);
    overflow->move(width() - barHeight, 0);
}

void TabBarView::mouseDoubleClickEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton && onNew)
        onNew();
}

void TabBarView::listTabs()
{
    auto *const menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    for (int index = 0; index < tabs->count(); ++index) {
        auto *const item = menu->addAction(tabs->tabText(index), this, [this, index] {
            if (onSelect)
                onSelect(index);
        });
        item->setCheckable(true);
        item->setChecked(index == tabs->currentIndex());
    }
    menu->popup(overflow->mapToGlobal(QPoint(0, barHeight)));
}

void TabBarView::contextMenuEvent(QContextMenuEvent *event)
{
    auto const index = tabs->tabAt(tabs->mapFrom(this, event->pos()));
    if (index >= 0)
        showMenuOf(index, event->globalPos());
    event->accept();
}

void TabBarView::showMenuOf(int index, QPoint const &where)
{
    auto *const menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    auto const add = [&](char const *title, std::function<void(int)> const &act) {
        return menu->addAction(Wording::shown(title), this, [act, index] {
            if (act)
                act(index);
        });
    };
    auto const isOnlyOne = tabs->count() == 1;
    add("Close Tab", onClose)->setDisabled(isOnlyOne);
    add("Close Other Tabs", onCloseOthers)->setDisabled(isOnlyOne);
    add("Duplicate Tab", onDuplicate);
    menu->popup(where);
}

} // namespace tw
