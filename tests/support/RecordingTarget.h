#pragma once

#include "Tarnwick/Commands/CommandTarget.h"

#include <map>
#include <vector>

namespace tw::test {

/// A target that has the commands that a test gives it, and remembers what it was asked to perform.
class RecordingTarget : public CommandTarget {
public:
    explicit RecordingTarget(std::map<Command, CommandState> commands = {}) : states(std::move(commands)) {}

    std::optional<CommandState> stateOf(Command command) const override
    {
        auto const found = states.find(command);
        return found == states.end() ? std::nullopt : std::optional(found->second);
    }

    void perform(Command command) override { performed.push_back(command); }

    std::map<Command, CommandState> states;
    std::vector<Command> performed;
};

} // namespace tw::test
