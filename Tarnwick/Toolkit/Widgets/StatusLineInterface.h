#pragma once

#include <QAccessibleWidget>

namespace tw {

/// What a screen reader knows of an ElidedLabel: a status bar whose name is the whole text. A change of the name is
/// told when it is set.
class StatusLineInterface final : public QAccessibleWidget {
public:
    explicit StatusLineInterface(QWidget *label) : QAccessibleWidget(label, QAccessible::StatusBar) {}

    /// Makes the interface for every ElidedLabel from now on.
    static void install();
};

} // namespace tw
