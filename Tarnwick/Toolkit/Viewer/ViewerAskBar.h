#pragma once

#include "Tarnwick/Viewer/SearchWish.h"
#include "Tarnwick/Viewer/ViewerKeys.h"

#include <QWidget>

#include <functional>

class QLineEdit;
class QToolButton;

namespace tw {

/// The line below a text in which it is typed what to look for, or where to go. Hidden until it asks.
class ViewerAskBar final : public QWidget {
public:
    explicit ViewerAskBar(QWidget *parent = nullptr);

    /// What was typed. False: it makes no sense, and the bar stays.
    std::function<bool(SearchWish const &wish)> onFind;
    std::function<bool(std::string const &typed)> onGoTo;
    std::function<void()> onClosed;

    /// Asks for ViewerAction::find or ViewerAction::goTo.
    void ask(ViewerAction what);

    QLineEdit &field() const { return *line; }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    QToolButton *addOption(char const *title, char const *help);
    void answered();
    void closeBar();

    QLineEdit *const line;
    QToolButton *ignoresCase = nullptr;
    QToolButton *isExpression = nullptr;
    ViewerAction asked = ViewerAction::goTo;
};

} // namespace tw
