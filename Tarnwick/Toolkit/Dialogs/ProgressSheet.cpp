#include "Tarnwick/Toolkit/Dialogs/ProgressSheet.h"

#include "TWCore/Model/DisplayText.h"
#include "Tarnwick/Toolkit/Appearance/Wording.h"
#include "Tarnwick/Toolkit/Dialogs/JobBar.h"
#include "Tarnwick/Transfers/TransferText.h"

#include <QCloseEvent>
#include <QGridLayout>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QTimerEvent>

namespace tw {

namespace {

constexpr int contentWidth = 420;

/// A bar that moves in steps of a twentieth of a second looks smooth; work may report far more often.
constexpr int betweenLooks = 50;

} // namespace

ProgressSheet::ProgressSheet(std::shared_ptr<JobList> list, std::shared_ptr<Job> shown, QWidget *window)
    : Sheet(Wording::shown(shown->title), {}, window),
      works(std::move(list)),
      work(std::move(shown)),
      bar(JobBar::make(this)),
      files(makeLabel(Qt::AlignLeft)),
      amount(makeLabel(Qt::AlignRight)),
      speed(makeLabel(Qt::AlignLeft)),
      left(makeLabel(Qt::AlignRight)),
      item(makeLabel(Qt::AlignLeft)),
      cancel(buttons().addButton(Wording::shown("Cancel"), QDialogButtonBox::RejectRole))
{
    bar->setFixedWidth(contentWidth);
    addContent(bar);
    auto *const numbers = new QWidget(this);
    auto *const grid = new QGridLayout(numbers);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->addWidget(files, 0, 0);
    grid->addWidget(amount, 0, 1);
    grid->addWidget(speed, 1, 0);
    grid->addWidget(left, 1, 1);
    addContent(numbers);
    addContent(item);
    auto *const background = buttons().addButton(Wording::shown("Run in &Background"), QDialogButtonBox::ActionRole);
    connect(background, &QPushButton::clicked, this, [this] { works->move(work, Job::Place::background); });
    background->setDefault(true);
    background->setFocus();
    refresh();
}

QLabel *ProgressSheet::makeLabel(Qt::Alignment alignment)
{
    auto *const label = new QLabel(this);
    label->setTextFormat(Qt::PlainText);
    label->setAlignment(alignment | Qt::AlignVCenter);
    // The room that it has, whatever it says.
    label->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    label->setMinimumHeight(label->fontMetrics().height());
    return label;
}

void ProgressSheet::refresh()
{
    auto const look = works->lookAt(*work);
    JobBar::show(*bar, look.state);
    files->setText(QString::fromStdString(TransferText::files(look.state)));
    amount->setText(QString::fromStdString(look.state.text()));
    speed->setText(look.speed ? Wording::shown(TransferText::speed(*look.speed)) : QString());
    if (look.isCancelled)
        left->setText(Wording::shown("Cancelling…"));
    else
        left->setText(look.left ? Wording::shown(TransferText::timeLeft(*look.left)) : QString());
    auto const name = QString::fromStdString(onOneLine(look.state.item));
    item->setText(item->fontMetrics().elidedText(name, Qt::ElideMiddle, contentWidth)); // with its extension
    cancel->setEnabled(!look.isCancelled);
}

void ProgressSheet::reject()
{
    work->cancel();
    refresh();
}

void ProgressSheet::closeEvent(QCloseEvent *event)
{
    reject();
    event->accept();
}

void ProgressSheet::showEvent(QShowEvent *event)
{
    Sheet::showEvent(event);
    beat.start(betweenLooks, this);
}

void ProgressSheet::timerEvent(QTimerEvent *event)
{
    if (event->timerId() != beat.timerId())
        return Sheet::timerEvent(event);
    if (!isVisible())
        return beat.stop();
    refresh();
}

} // namespace tw
