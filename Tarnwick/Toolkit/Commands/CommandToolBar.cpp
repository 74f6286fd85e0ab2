#include "Tarnwick/Toolkit/Commands/CommandToolBar.h"

#include "TWCore/Model/DisplayText.h"
#include "TWCore/Model/WindowsPath.h"
#include "Tarnwick/Commands/CommandTable.h"
#include "Tarnwick/Connections/ConnectionItem.h"
#include "Tarnwick/Settings/Settings.h"
#include "Tarnwick/Toolkit/Appearance/SymbolIcons.h"
#include "Tarnwick/Toolkit/Appearance/Wording.h"
#include "Tarnwick/Toolkit/Commands/CommandActions.h"
#include "Tarnwick/Toolkit/Widgets/TypeAheadMenu.h"

#include <QContextMenuEvent>
#include <QEvent>
#include <QMenu>
#include <QToolButton>

namespace tw {

namespace {

/// The most room that a path takes in the history menu, in widths of an average letter.
constexpr int mostLettersInMenu = 60;

QString placeOf(PaneHistory::Visit const &visit)
{
    auto const path = WindowsPath::display(visit.path);
    auto const place = visit.connection == localConnection ? path : visit.connection + ':' + path;
    return QString::fromStdString(withNothingHidden(onOneLine(place)));
}

} // namespace

CommandToolBar::CommandToolBar(CommandActions &actions, Defaults &defaults, QWidget *parent)
    : QToolBar(parent), commands(actions), settings(defaults)
{
    setObjectName(QStringLiteral("TarnwickToolbar2"));
    setWindowTitle(Wording::shown("Toolbar"));
    setMovable(false);
    setFloatable(false);
    build();
    observation = Settings::toolBar.observe(settings, [this] { build(); });
    window()->installEventFilter(this);
}

void CommandToolBar::build()
{
    clear();
    shown.clear();
    auto const layout = ToolBarLayout::stored(Settings::toolBar.read(settings));
    setToolButtonStyle(layout.labels == ToolBarLayout::Labels::shown ? Qt::ToolButtonTextUnderIcon
                                                                     : Qt::ToolButtonIconOnly);
    for (auto const identifier : layout.items)
        add(*toolBarItem(identifier));
    drawIcons();
    showStates();
}

void CommandToolBar::add(ToolBarItem const &item)
{
    if (!item.command) {
        auto *const room = new QWidget(this);
        if (item.identifier == flexibleSpace)
            room->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
        else
            room->setFixedWidth(iconSize().width());
        addWidget(room);
        return;
    }
    auto &usual = commands.action(*item.command);
    // An action of its own: it is called otherwise here, and greyed, while the key of a command is never greyed.
    auto *const action = addAction(Wording::shown(item.label));
    action->setToolTip(usual.toolTip());
    action->setCheckable(usual.isCheckable());
    connect(action, &QAction::triggered, &usual, &QAction::trigger);
    shown.push_back({&item, action});
    auto *const made = button(item.identifier);
    made->setAccessibleName(Wording::shown(rowOf(*item.command).toolTip));
    if (item.command == Command::back)
        addHistory(*made);
}

void CommandToolBar::addHistory(QToolButton &back)
{
    auto *const menu = new TypeAheadMenu(&back);
    menu->setToolTipsVisible(true);
    connect(menu, &QMenu::aboutToShow, this, [this, menu] { fillHistory(*menu); });
    back.setMenu(menu);
    back.setPopupMode(QToolButton::MenuButtonPopup);
}

void CommandToolBar::fillHistory(QMenu &menu) const
{
    menu.clear();
    for (auto const &visit : recentVisits ? recentVisits() : std::vector<PaneHistory::Visit>()) {
        auto const full = placeOf(visit);
        auto const &metrics = menu.fontMetrics();
        auto title = metrics.elidedText(full, Qt::ElideMiddle, mostLettersInMenu * metrics.averageCharWidth());
        auto *const action = menu.addAction(title.replace(QLatin1Char('&'), QLatin1String("&&")));
        action->setData(full);
        action->setToolTip(full);
        connect(action, &QAction::triggered, this, [this, visit] {
            if (onVisitPicked)
                onVisitPicked(visit);
        });
    }
    if (menu.isEmpty())
        menu.addAction(Wording::shown("No history yet"))->setEnabled(false);
}

QToolButton *CommandToolBar::button(std::string_view identifier) const
{
    for (auto const &[item, action] : shown) {
        if (item->identifier == identifier)
            return qobject_cast<QToolButton *>(widgetForAction(action));
    }
    return nullptr;
}

void CommandToolBar::drawIcons()
{
    for (auto const &[item, action] : shown)
        action->setIcon(SymbolIcons::icon(item->themeIcon, item->ownIcon, palette().color(QPalette::Window)));
}

void CommandToolBar::showStates()
{
    for (auto const &[item, action] : shown) {
        auto const state = commands.stateOf(*item->command);
        // The menu of the back button can be opened at the beginning of the history too, and says that there is none.
        action->setEnabled((state && state->isEnabled) || item->command == Command::back);
        action->setChecked(state && state->isChecked);
    }
}

bool CommandToolBar::eventFilter(QObject *watched, QEvent *event)
{
    // Whatever changes the state of a command changes what the window shows too.
    if (event->type() == QEvent::UpdateRequest && watched == window())
        showStates();
    return QToolBar::eventFilter(watched, event);
}

void CommandToolBar::changeEvent(QEvent *event)
{
    QToolBar::changeEvent(event);
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::ThemeChange)
        drawIcons();
}

void CommandToolBar::contextMenuEvent(QContextMenuEvent *event)
{
    auto *const menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->addAction(&commands.action(Command::customizeToolBar));
    menu->popup(event->globalPos());
    event->accept();
}

} // namespace tw
