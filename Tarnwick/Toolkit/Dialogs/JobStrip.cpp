#include "Tarnwick/Toolkit/Dialogs/JobStrip.h"

#include "Tarnwick/Toolkit/Appearance/Contrast.h"
#include "Tarnwick/Toolkit/Appearance/Wording.h"
#include "Tarnwick/Toolkit/Dialogs/JobLine.h"

#include <QKeyEvent>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QTimerEvent>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace tw {

namespace {

constexpr int sideMargin = 10;
constexpr int verticalMargin = 4;
constexpr int gap = 2;

/// Where the titles of the lines begin.
constexpr int titleIndent = 8;

/// Of the line between the strip and the panes.
constexpr double separatorShare = 0.2;

/// Nobody looks at the strip all the time: it need not move as smoothly as a sheet does.
constexpr int betweenLooks = 200;

} // namespace

JobStrip::JobStrip(std::shared_ptr<JobList> list, QWidget *parent)
    : QWidget(parent), works(std::move(list)), column(new QVBoxLayout(this)), more(new QLabel(this))
{
    column->setContentsMargins(sideMargin, verticalMargin, sideMargin, verticalMargin);
    column->setSpacing(gap);
    more->setTextFormat(Qt::PlainText);
    more->setIndent(titleIndent);
    column->addWidget(more);
    hide();
    // Work outlives the window.
    works->observe([self = QPointer(this)] {
        if (self)
            self->sync();
    });
}

void JobStrip::sync()
{
    auto const all = works->inBackground();
    auto const count = std::min(all.size(), mostLines);
    auto const shown = std::span(all).first(count);
    auto const *const focused = window()->focusWidget();
    auto const hadKeyboard = focused && isAncestorOf(focused);
    showLines(shown);
    more->setVisible(all.size() > count);
    more->setText(Wording::shown(Text("and %@ more", {std::to_string(all.size() - count)})));
    setVisible(!lines.empty());
    if (lines.empty())
        beat.stop();
    else
        beat.start(betweenLooks, this);
    refresh();
    auto const *const now = window()->focusWidget();
    if (hadKeyboard && (!now || !now->isVisible() || !isAncestorOf(now)))
        leave();
}

void JobStrip::showLines(std::span<std::shared_ptr<Job> const> jobs)
{
    auto old = std::exchange(lines, {});
    for (auto const &job : jobs) {
        auto const known = std::ranges::find(old, job, &JobLine::work);
        auto *const line = known == old.end() ? newLine(job) : *known;
        if (known != old.end())
            old.erase(known);
        column->insertWidget(static_cast<int>(lines.size()), line);
        line->show();
        lines.push_back(line);
    }
    for (auto *const line : old) {
        line->hide();
        line->deleteLater(); // its button may be the one that was just pressed
    }
}

JobLine *JobStrip::newLine(std::shared_ptr<Job> const &job)
{
    auto *const line = new JobLine(works, job, this);
    for (auto *const button : line->buttons())
        button->installEventFilter(this);
    return line;
}

void JobStrip::refresh()
{
    for (auto *const line : lines)
        line->refresh();
}

void JobStrip::timerEvent(QTimerEvent *event)
{
    if (event->timerId() != beat.timerId())
        return QWidget::timerEvent(event);
    refresh();
}

bool JobStrip::takeKeyboard()
{
    if (lines.empty())
        return false;
    lines.front()->buttons().front()->setFocus(Qt::OtherFocusReason);
    return true;
}

void JobStrip::leave() const
{
    if (onLeave)
        onLeave();
}

bool JobStrip::eventFilter(QObject *watched, QEvent *event)
{
    auto *const button = qobject_cast<QPushButton *>(watched);
    if (button && event->type() == QEvent::KeyPress && handleKey(*button, static_cast<QKeyEvent const *>(event)->key()))
        return true;
    // Not every style shows which button has the keyboard if the keyboard came without Tab.
    if (button && (event->type() == QEvent::FocusIn || event->type() == QEvent::FocusOut))
        button->setDefault(event->type() == QEvent::FocusIn);
    return QWidget::eventFilter(watched, event);
}

bool JobStrip::handleKey(QWidget &button, int key)
{
    auto const row = std::ranges::find_if(lines, [&](auto *line) { return line->isAncestorOf(&button); });
    if (row == lines.end())
        return false;
    auto const buttons = (*row)->buttons();
    auto const place = std::ranges::find(buttons, &button) - buttons.begin();
    auto const goTo = [&](std::ptrdiff_t line, std::ptrdiff_t wanted) {
        auto const last = static_cast<std::ptrdiff_t>(lines.size()) - 1;
        auto const there = lines[static_cast<std::size_t>(std::clamp<std::ptrdiff_t>(line, 0, last))]->buttons();
        auto const rightmost = static_cast<std::ptrdiff_t>(there.size()) - 1;
        there[static_cast<std::size_t>(std::clamp<std::ptrdiff_t>(wanted, 0, rightmost))]->setFocus(
            Qt::OtherFocusReason);
        return true;
    };
    auto const line = row - lines.begin();
    switch (key) {
    case Qt::Key_Up:
        return goTo(line - 1, place);
    case Qt::Key_Down:
        return goTo(line + 1, place);
    case Qt::Key_Left:
        return goTo(line, place - 1);
    case Qt::Key_Right:
        return goTo(line, place + 1);
    case Qt::Key_Return:
    case Qt::Key_Enter:
        static_cast<QPushButton &>(button).click();
        return true;
    case Qt::Key_Escape:
        leave();
        return true;
    default:
        return false;
    }
}

void JobStrip::paintEvent(QPaintEvent * /*event*/)
{
    QPainter painter(this);
    auto const ground = palette().color(QPalette::Window);
    painter.fillRect(0, 0, width(), 1, blend(palette().color(QPalette::WindowText), ground, separatorShare));
}

} // namespace tw
