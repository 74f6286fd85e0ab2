#pragma once

#include "Tarnwick/Commands/CommandTarget.h"

namespace tw {

class MainWindowController;

/// The commands of the main window: those about its panes go to its controller.
///
/// Threads: main context only.
/// Lifetime: the controller outlives it.
class MainWindowCommands final : public CommandTarget {
public:
    explicit MainWindowCommands(MainWindowController &controller) : window(controller) {}

    std::optional<CommandState> stateOf(Command command) const override;
    void perform(Command command) override;

private:
    MainWindowController &window;
};

} // namespace tw
