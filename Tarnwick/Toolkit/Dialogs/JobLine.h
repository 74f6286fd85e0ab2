#pragma once

#include "Tarnwick/Transfers/JobList.h"

#include <QWidget>

#include <array>
#include <memory>

class QLabel;
class QProgressBar;
class QPushButton;

namespace tw {

class ElidedLabel;

/// One line of the strip: some work in the background, with what can be done about it.
class JobLine final : public QWidget {
    Q_OBJECT

public:
    JobLine(std::shared_ptr<JobList> list, std::shared_ptr<Job> shown, QWidget *parent);

    std::shared_ptr<Job> const &work() const noexcept { return shownWork; }

    /// From left to right: shows the work's sheet again; calls the work off.
    std::array<QPushButton *, 2> buttons() const { return {showSheet, cancel}; }

    void refresh();

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    QPushButton *makeButton(char const *title);
    QLabel *makeNumber(char const *widest);

    std::shared_ptr<JobList> const works;
    std::shared_ptr<Job> const shownWork;
    ElidedLabel *const title;
    QProgressBar *const bar;
    ElidedLabel *const amount;
    QLabel *const speed;
    QLabel *const left;
    QPushButton *const showSheet;
    QPushButton *const cancel;
};

} // namespace tw
