#include "Tarnwick/Toolkit/Dialogs/JobStrip.h"

#include "Tarnwick/Toolkit/Appearance/Contrast.h"
#include "Tarnwick/Toolkit/Appearance/Wording.h"
#include "Tarnwick/Toolkit/Dialogs/JobLine.h"

#include <QLabel>
#include <QPainter>
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
    : QWidget(parent),
      works(std::move(list)),
      column(new QVBoxLayout(this)),
      more(new QLabel(this)),
      keyboard(new ButtonLines(*this, [this] { return buttons(); }))
{
    column->setContentsMargins(sideMargin, verticalMargin, sideMargin, verticalMargin);
    column->setSpacing(gap);
    more->setTextFormat(Qt::PlainText);
    more->setIndent(titleIndent);
    column->addWidget(more);
    hide();
    keyboard->onLeave = [this] {
        if (onLeave)
            onLeave();
    };
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
        keyboard->onLeave();
}

std::vector<ButtonLines::Line> JobStrip::buttons() const
{
    std::vector<ButtonLines::Line> all;
    for (auto const *const line : lines) {
        auto const of = line->buttons();
        all.emplace_back(of.begin(), of.end());
    }
    return all;
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
    keyboard->watch(line->buttons());
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

void JobStrip::paintEvent(QPaintEvent * /*event*/)
{
    QPainter painter(this);
    auto const ground = palette().color(QPalette::Window);
    painter.fillRect(0, 0, width(), 1, blend(palette().color(QPalette::WindowText), ground, separatorShare));
}

} // namespace tw
