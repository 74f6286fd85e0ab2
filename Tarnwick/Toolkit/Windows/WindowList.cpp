#include "Tarnwick/Toolkit/Windows/WindowList.h"

#include "Tarnwick/Toolkit/Commands/Mnemonics.h"

#include <QMenu>
#include <QPointer>

#include <algorithm>
#include <span>

namespace tw::WindowList {

namespace {

/// Marks the actions that a later call replaces.
constexpr auto isListed = "isListedWindow";

/// A long name of a file keeps its beginning and its extension.
constexpr int mostOfTitle = 60; ///< average characters

QAction *actionFor(QWidget &window, QMenu &menu)
{
    auto const metrics = menu.fontMetrics();
    auto title = metrics.elidedText(window.windowTitle(), Qt::ElideMiddle, mostOfTitle * metrics.averageCharWidth());
    auto *const action = menu.addAction(title.replace(QLatin1Char('&'), QLatin1String("&&")));
    QObject::connect(action, &QAction::triggered, &menu, [shown = QPointer(&window)] {
        if (!shown)
            return;
        shown->setWindowState(shown->windowState() & ~Qt::WindowMinimized);
        shown->raise();
        shown->activateWindow();
    });
    return action;
}

} // namespace

void fill(QMenu &menu, QWidget &here, std::vector<QWidget *> const &others)
{
    for (auto *const action : menu.actions()) {
        if (action->property(isListed).toBool())
            delete action;
    }
    if (others.empty())
        return;
    std::vector<QAction *> listed{menu.addSeparator(), actionFor(here, menu)};
    listed.back()->setCheckable(true);
    listed.back()->setChecked(true);
    for (auto *const each : std::span(others).last(std::min(others.size(), mostWindows)))
        listed.push_back(actionFor(*each, menu));
    for (auto *const action : listed)
        action->setProperty(isListed, true);
    Mnemonics::give(menu.actions());
}

} // namespace tw::WindowList
