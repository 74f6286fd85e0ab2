#pragma once

#include "Tarnwick/Operations/ProgressState.h"

class QProgressBar;
class QWidget;

/// A bar that shows how far some work is.
namespace tw::JobBar {

QProgressBar *make(QWidget *parent);

/// Busy as long as it is not known how much there is to do.
void show(QProgressBar &bar, ProgressState const &state);

} // namespace tw::JobBar
