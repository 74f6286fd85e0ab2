#pragma once

#include "Tarnwick/Commands/Command.h"

#include <QObject>

#include <functional>
#include <optional>

class QKeyEvent;
class QWidget;

namespace tw {

/// Turns the keys that are pressed in a window into commands, by the rules of `commandOf`. Qt's own shortcuts know no
/// key by its position, and do nothing for a key press that fits two of them.
///
/// A widget that has the keyboard may claim a key for itself, as text fields do.
///
/// Lifetime: the window's child.
class CommandShortcuts final : public QObject {
public:
    enum class Press { first, repeated };

    using Handler = std::function<void(Command command, Press press)>;

    CommandShortcuts(QWidget &window, Handler handler);

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    bool claim(QKeyEvent &event);
    bool take(QKeyEvent const &event);

    /// A key whose press is on its way behind the question whether anybody claims it.
    struct Claimed {
        int key;
        Qt::KeyboardModifiers modifiers;
        Command command;
    };

    QWidget &window;
    Handler const handler;
    std::optional<Claimed> claimed;
};

} // namespace tw
