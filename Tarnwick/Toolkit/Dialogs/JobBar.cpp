#include "Tarnwick/Toolkit/Dialogs/JobBar.h"

#include "Tarnwick/Toolkit/Appearance/Wording.h"

#include <QProgressBar>

namespace tw::JobBar {

namespace {

/// The bar counts to this, since the bytes of a transfer are more than it can count.
constexpr int wholeBar = 1000;

} // namespace

QProgressBar *make(QWidget *parent)
{
    auto *const bar = new QProgressBar(parent);
    bar->setTextVisible(false);
    bar->setAccessibleName(Wording::shown("Progress"));
    bar->setRange(0, 0); // how much there is to do is not known yet
    return bar;
}

void show(QProgressBar &bar, ProgressState const &state)
{
    auto const share = state.share();
    if (!share)
        return bar.setRange(0, 0);
    bar.setRange(0, wholeBar);
    bar.setValue(static_cast<int>(*share * wholeBar));
}

} // namespace tw::JobBar
