#include "Tarnwick/Toolkit/Dialogs/ProgressSheet.h"

#include "TWCore/Model/DisplayText.h"
#include "Tarnwick/Toolkit/Appearance/Wording.h"

#include <QCloseEvent>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>

#include <utility>

namespace tw {

namespace {

constexpr int barWidth = 380;

/// The bar counts to this, since the bytes of a transfer are more than it can count.
constexpr int wholeBar = 1000;

} // namespace

ProgressSheet::ProgressSheet(std::string const &title, std::function<void()> onCancel, QWidget *window)
    : Sheet(Wording::shown(title), {}, window),
      cancelled(std::move(onCancel)),
      amount(new QLabel(this)),
      detail(new QLabel(this)),
      bar(new QProgressBar(this)),
      cancel(buttons().addButton(Wording::shown("Cancel"), QDialogButtonBox::RejectRole))
{
    amount->setTextFormat(Qt::PlainText);
    detail->setTextFormat(Qt::PlainText);
    addContent(amount);
    addContent(bar);
    addContent(detail);
    bar->setFixedWidth(barWidth);
    bar->setTextVisible(false);
    bar->setRange(0, 0); // how much there is to do is not known yet
    cancel->setAutoDefault(false);
}

void ProgressSheet::update(ProgressState const &state)
{
    amount->setText(QString::fromStdString(state.text()));
    if (!state.item.empty()) {
        auto const item = QString::fromStdString(onOneLine(state.item));
        detail->setText(detail->fontMetrics().elidedText(item, Qt::ElideMiddle, barWidth)); // with its extension
    }
    if (auto const share = state.share()) {
        bar->setRange(0, wholeBar);
        bar->setValue(static_cast<int>(*share * wholeBar));
    }
}

void ProgressSheet::reject()
{
    if (!cancelled)
        return;
    cancel->setEnabled(false);
    std::exchange(cancelled, nullptr)();
}

void ProgressSheet::closeEvent(QCloseEvent *event)
{
    reject();
    event->accept();
}

} // namespace tw
