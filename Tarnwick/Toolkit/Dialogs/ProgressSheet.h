#pragma once

#include "Tarnwick/Toolkit/Dialogs/Sheet.h"
#include "Tarnwick/Transfers/JobList.h"

#include <QBasicTimer>

class QLabel;
class QProgressBar;
class QPushButton;

namespace tw {

/// Shows how far some work is, until it is dismissed. Cancel and Escape call the work off, once; the sheet stays until
/// the work has ended. A button sends it to the background.
class ProgressSheet final : public Sheet {
    Q_OBJECT

public:
    ProgressSheet(std::shared_ptr<JobList> list, std::shared_ptr<Job> work, QWidget *window);

    void reject() override;

protected:
    /// Agrees, since quitting closes every window and waits for none.
    void closeEvent(QCloseEvent *event) override;

    void showEvent(QShowEvent *event) override;
    void timerEvent(QTimerEvent *event) override;

private:
    QLabel *makeLabel(Qt::Alignment alignment);
    void refresh();

    std::shared_ptr<JobList> const works;
    std::shared_ptr<Job> const work;
    QProgressBar *const bar;
    QLabel *const files;
    QLabel *const amount;
    QLabel *const speed;
    QLabel *const left;
    QLabel *const item;
    QPushButton *const cancel;
    QBasicTimer beat;
};

} // namespace tw
