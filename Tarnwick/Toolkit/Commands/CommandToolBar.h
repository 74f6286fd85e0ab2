#pragma once

#include "Tarnwick/Commands/ToolBarLayout.h"
#include "Tarnwick/Panes/PaneHistory.h"
#include "Tarnwick/Settings/Defaults.h"

#include <QToolBar>

#include <functional>
#include <vector>

class QToolButton;

namespace tw {

class CommandActions;

/// The tool bar of a window, as the user has arranged it.
///
/// Lifetime: `actions` and `settings` outlive it.
class CommandToolBar final : public QToolBar {
public:
    CommandToolBar(CommandActions &actions, Defaults &settings, QWidget *parent);

    /// The places that the history button offers, the newest first; none without it.
    std::function<std::vector<PaneHistory::Visit>()> recentVisits;
    std::function<void(PaneHistory::Visit const &visit)> onVisitPicked;

    /// The button of an item; null if it is not on the bar.
    QToolButton *button(std::string_view identifier) const;

    bool eventFilter(QObject *watched, QEvent *event) override;

protected:
    void changeEvent(QEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;

private:
    void build();
    void add(ToolBarItem const &item);
    void addHistory(QToolButton &button);
    void fillHistory(QMenu &menu) const;
    void drawIcons();
    void showStates();

    CommandActions &commands;
    Defaults &settings;
    Defaults::Subscription observation;

    struct Shown {
        ToolBarItem const *item;
        QAction *action;
    };

    std::vector<Shown> shown;
};

} // namespace tw
