#pragma once

#include "TWCore/Provider/CommandHost.h"
#include "tests/support/ScriptedProvider.h"

namespace tw::test {

/// A host whose listings and whose answers to commands wait until the test gives them. For one thread.
class FakeCommandHost : public ScriptedProvider, public CommandHost {
public:
    struct Run {
        HostCommand command;
        std::shared_ptr<Completion<CommandResult>> answer;
    };

    std::string host() const override { return name; }

    std::string displayName() const override { return name; }

    std::string identifier() const override { return "ssh:" + name; }

    Task<ShellDialect> dialect() override { return soon(speaks); }

    Task<std::string> defaultDirectory() override { return soon(home); }

    Task<ArchiveCapability> archiveCapability() override { return soon(archives); }

    Task<std::vector<std::string>> transportOptions() override
    {
        co_return std::vector<std::string>{"-o", "BatchMode=yes"};
    }

    Task<bool> logsInByItself() override { co_return true; }

    Task<CommandResult> runCommand(HostCommand command) override
    {
        auto const answer = std::make_shared<Completion<CommandResult>>();
        runs.push_back({std::move(command), answer});
        auto answering = Completion<CommandResult>::wait(answer);
        return areSent ? std::move(answering).withStop({}) : std::move(answering);
    }

    std::string name = "box";
    ShellDialect speaks = ShellDialect::posix;
    std::string home = "/home/ann";
    ArchiveCapability archives = {};
    bool areSent = false;  ///< a stop does not take commands back
    std::vector<Run> runs; ///< the commands so far, the oldest first

private:
    template <class T>
    static Task<T> soon(T value)
    {
        co_return value;
    }
};

} // namespace tw::test
