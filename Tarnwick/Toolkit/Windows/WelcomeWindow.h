#pragma once

#include <QDialog>

namespace tw {

class Defaults;

/// What a new user reads once: what the program is for, and the few keys that it takes to begin.
class WelcomeWindow final : public QDialog {
public:
    explicit WelcomeWindow(QWidget *parent);

    /// Shows it in front of `mainWindow`, if it was never shown to this user. That it was is stored first, so that not
    /// even a crash shows it twice. It lives until it is dismissed or the main window goes. Null if it is not shown.
    static WelcomeWindow *showIfFirstRun(Defaults &defaults, QWidget &mainWindow);
};

} // namespace tw
