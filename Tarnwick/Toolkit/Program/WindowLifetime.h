#pragma once

#include <functional>

class QWidget;

namespace tw::WindowLifetime {

/// Runs `action` once, when the window closes: when it has agreed to being closed, or is destroyed. Neither the action
/// nor anything else of this outlives the window.
void onClose(QWidget *window, std::function<void()> action);

} // namespace tw::WindowLifetime
