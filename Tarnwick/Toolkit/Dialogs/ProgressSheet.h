#pragma once

#include "Tarnwick/Operations/ProgressState.h"
#include "Tarnwick/Toolkit/Dialogs/Sheet.h"

#include <functional>

class QLabel;
class QProgressBar;
class QPushButton;

namespace tw {

/// Shows how far some work is, until it is dismissed. Cancel and Escape call the work off, once; the sheet stays until
/// the work has ended.
class ProgressSheet final : public Sheet {
public:
    ProgressSheet(std::string const &title, std::function<void()> onCancel, QWidget *window);

    void update(ProgressState const &state);

    void reject() override;

protected:
    /// Agrees, since quitting closes every window and waits for none.
    void closeEvent(QCloseEvent *event) override;

private:
    std::function<void()> cancelled;
    QLabel *const amount;
    QLabel *const detail;
    QProgressBar *const bar;
    QPushButton *const cancel;
};

} // namespace tw
