#pragma once

#include "Tarnwick/Toolkit/Widgets/ButtonLines.h"
#include "Tarnwick/Transfers/JobList.h"

#include <QBasicTimer>
#include <QPointer>
#include <QWidget>

#include <functional>
#include <memory>
#include <span>
#include <vector>

class QLabel;
class QVBoxLayout;

namespace tw {

class JobLine;

/// The work in the background, a line each, at the bottom of the window. Hidden while there is none.
///
/// The keyboard comes here only by a command, and goes through the buttons as through ButtonLines.
class JobStrip final : public QWidget {
    Q_OBJECT

public:
    /// More lines would take the panes' room. The oldest work is shown, since it is what people wait for.
    static constexpr std::size_t mostLines = 3;

    JobStrip(std::shared_ptr<JobList> list, QWidget *parent);

    /// False if there is nothing to go to.
    bool takeKeyboard() const { return keyboard->takeKeyboard(); }

    /// The keyboard is to be somewhere else.
    std::function<void()> onLeave;

protected:
    void timerEvent(QTimerEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    void sync();
    void refresh();
    void showLines(std::span<std::shared_ptr<Job> const> jobs);
    JobLine *newLine(std::shared_ptr<Job> const &job);
    std::vector<ButtonLines::Line> buttons() const;

    std::shared_ptr<JobList> const works;
    QVBoxLayout *const column;
    QLabel *const more;
    ButtonLines *const keyboard;
    std::vector<JobLine *> lines;
    QBasicTimer beat;
};

} // namespace tw
