#include "Tarnwick/Toolkit/Dialogs/JobLine.h"

#include "Tarnwick/Toolkit/Appearance/Wording.h"
#include "Tarnwick/Toolkit/Dialogs/JobBar.h"
#include "Tarnwick/Toolkit/Widgets/ElidedLabel.h"
#include "Tarnwick/Transfers/TransferText.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>

namespace tw {

namespace {

constexpr int gap = 8;
constexpr QSize barSize(110, 10);

/// A narrower line does without what can be spared.
constexpr int widthWithSpeed = 760;
constexpr int widthWithBar = 560;

} // namespace

JobLine::JobLine(std::shared_ptr<JobList> list, std::shared_ptr<Job> shown, QWidget *parent)
    : QWidget(parent),
      works(std::move(list)),
      shownWork(std::move(shown)),
      title(new ElidedLabel(this)),
      bar(JobBar::make(this)),
      amount(new ElidedLabel(this)),
      speed(makeNumber("8888M/s")),
      left(makeNumber("a few seconds left")),
      showSheet(makeButton("Show")),
      cancel(makeButton("Cancel"))
{
    title->setText(Wording::shown(shownWork->title));
    setAccessibleName(title->text());
    bar->setFixedSize(barSize);
    auto *const row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(gap);
    row->addWidget(title, 3);
    row->addWidget(bar);
    row->addWidget(amount, 3);
    row->addWidget(speed);
    row->addWidget(left);
    row->addWidget(showSheet);
    row->addWidget(cancel);
    connect(showSheet, &QPushButton::clicked, this, [this] { works->move(shownWork, Job::Place::sheet); });
    connect(cancel, &QPushButton::clicked, this, [this] {
        shownWork->cancel();
        refresh();
    });
}

QPushButton *JobLine::makeButton(char const *words)
{
    auto *const button = new QPushButton(Wording::shown(words), this);
    button->setFocusPolicy(Qt::TabFocus); // a click leaves the keyboard where it is
    return button;
}

/// Keeps its room whatever number it has, so that nothing beside it moves.
QLabel *JobLine::makeNumber(char const *widest)
{
    auto *const label = new QLabel(this);
    label->setTextFormat(Qt::PlainText);
    label->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    label->setFixedWidth(label->fontMetrics().horizontalAdvance(Wording::shown(widest)));
    return label;
}

void JobLine::refresh()
{
    auto const look = works->lookAt(*shownWork);
    JobBar::show(*bar, look.state);
    auto words = TransferText::files(look.state);
    auto const bytes = look.state.text();
    words += (words.empty() || bytes.empty() ? "" : " · ") + bytes;
    amount->setText(QString::fromStdString(words));
    speed->setText(look.speed ? Wording::shown(TransferText::speed(*look.speed)) : QString());
    if (look.isCancelled)
        left->setText(Wording::shown("Cancelling…"));
    else
        left->setText(look.left ? Wording::shown(TransferText::timeLeft(*look.left)) : QString());
    cancel->setEnabled(!look.isCancelled);
}

void JobLine::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    speed->setVisible(width() >= widthWithSpeed);
    bar->setVisible(width() >= widthWithBar);
}

} // namespace tw
