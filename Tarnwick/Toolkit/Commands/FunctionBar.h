#pragma once

#include <QWidget>

namespace tw {

class CommandActions;

/// The row of function keys below the panes: a button for each command of the table that has a title for it.
///
/// Lifetime: `actions` outlives it.
class FunctionBar final : public QWidget {
public:
    FunctionBar(CommandActions &actions, QWidget *parent);
};

} // namespace tw
