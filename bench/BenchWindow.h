#pragma once

#include "TWEngine/Runtime/EngineRuntime.h"
#include "Tarnwick/Connections/ConnectionRegistry.h"
#include "Tarnwick/Preview/FilePreviews.h"
#include "Tarnwick/Toolkit/Program/QtMainContext.h"
#include "Tarnwick/Toolkit/Windows/MainWindow.h"

namespace tw::bench {

/// The program's own window, on show, with settings that nobody has changed.
class BenchWindow {
public:
    BenchWindow() { window.show(); }

    BenchWindow(BenchWindow const &) = delete;
    BenchWindow &operator=(BenchWindow const &) = delete;

    std::shared_ptr<Executor> executor() const { return mainContext.context(); }

    PaneController &leftPane() { return *controller.pane(PaneSide::left); }

private:
    /// A program without commands of its own.
    class NoCommands final : public CommandTarget {
    public:
        std::optional<CommandState> stateOf(Command /*command*/) const override { return std::nullopt; }

        void perform(Command /*command*/) override {}
    };

    MainWindowController &withPreviews()
    {
        // Files of hosts are not previewed here.
        controller.usePreviews(std::make_shared<FilePreviews>(runtime, [] { return std::string(); }));
        return controller;
    }

    EngineRuntime runtime;
    QtMainContext mainContext;
    ConnectionRegistry connections{{.engine = runtime, .mainContext = mainContext.context()}};
    MemoryDefaults defaults;
    NoCommands program;

public:
    MainWindowController controller{
        {mainContext.context(), runtime.clock(), defaults, runtime.workers().executor(WorkPriority::background)},
        connections};
    MainWindow window{withPreviews(), defaults, program};
};

} // namespace tw::bench
