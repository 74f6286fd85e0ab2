#include "Tarnwick/Toolkit/Commands/FunctionBar.h"

#include "Tarnwick/Commands/CommandTable.h"
#include "Tarnwick/Toolkit/Appearance/Wording.h"
#include "Tarnwick/Toolkit/Commands/CommandActions.h"
#include "Tarnwick/Toolkit/Commands/CommandKeySequences.h"
#include "Tarnwick/Toolkit/Commands/FunctionKeyButton.h"

#include <QAction>
#include <QHBoxLayout>

namespace tw {

namespace {

constexpr int gap = 4;
constexpr int margin = 10;

/// Few buttons in a wide window are still buttons.
constexpr int widestButton = 240;

} // namespace

FunctionBar::FunctionBar(CommandActions &actions, QWidget *parent) : QWidget(parent)
{
    auto *const row = new QHBoxLayout(this);
    row->setContentsMargins(margin, gap, margin, margin);
    row->setSpacing(gap);
    for (auto const &command : commandTable()) {
        if (command.buttonTitle.empty())
            continue;
        auto &action = actions.action(command.command);
        auto *const button =
            new FunctionKeyButton(keyTextOf(command) + QLatin1Char(' ') + Wording::shown(command.buttonTitle), this);
        button->setToolTip(action.toolTip());
        connect(button, &QAbstractButton::clicked, &action, &QAction::trigger);
        button->setMaximumWidth(widestButton);
        row->addWidget(button, 1);
    }
}

} // namespace tw
