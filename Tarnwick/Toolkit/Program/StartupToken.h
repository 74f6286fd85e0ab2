#pragma once

#include <QObject>

#include <string>

namespace tw {

/// What a program that is started now shows a window manager, so that its window may come to the front: the time of the
/// user's last key or click.
///
/// On X11 only. A compositor of Wayland gives its own tokens, which the toolkit of this version cannot ask for.
///
/// Threads: main context only.
class StartupToken final : public QObject {
public:
    StartupToken();

    /// A new one; empty where there is none.
    std::string next();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    bool const isUnderX11;
    quint64 lastInput = 0; ///< in the time of the X server, milliseconds
    int count = 0;
};

} // namespace tw
