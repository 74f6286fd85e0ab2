#pragma once

#include "Tarnwick/Window/MainWindowController.h"
#include "tests/support/FakeApplications.h"
#include "tests/support/FakeClipboard.h"
#include "tests/support/FakeConnections.h"
#include "tests/support/FakeDialogs.h"
#include "tests/support/Listings.h"
#include "tests/support/ManualClock.h"
#include "tests/support/RecordingDisplay.h"
#include "tests/support/ScriptedProvider.h"
#include "tests/support/TestLoop.h"

#include <gtest/gtest.h>

namespace tw::test {

class RecordingWindow final : public MainDisplay {
public:
    int equalized = 0;
    int closed = 0;
    int minimized = 0;
    int customized = 0;
    bool isWorking = false;
    int visitsToWork = 0;
    int columnsCustomized = 0;
    std::string copiedText;
    std::vector<std::shared_ptr<ViewerController>> viewers;
    std::shared_ptr<FakeClipboard> files = std::make_shared<FakeClipboard>();
    std::shared_ptr<FakeDialogs> questions = std::make_shared<FakeDialogs>();

    void equalizePanes() override { ++equalized; }

    void closeWindow() override { ++closed; }

    void minimizeWindow() override { ++minimized; }

    void customizeToolBar() override { ++customized; }

    bool hasBackgroundWork() const override { return isWorking; }

    void goToBackgroundWork() override { ++visitsToWork; }

    void customizeColumns() override { ++columnsCustomized; }

    void copyText(std::string const &text) override { copiedText = text; }

    void openViewer(std::shared_ptr<ViewerController> viewer) override { viewers.push_back(std::move(viewer)); }

    std::shared_ptr<Clipboard> clipboard() override { return files; }

    std::shared_ptr<Dialogs> dialogs() override { return questions; }
};

/// The controller of a window, with recording displays and fake connections.
class MainWindowControllerTest : public ::testing::Test {
protected:
    MainWindowControllerTest()
    {
        provider->usefulDepth = 1;
        controller.pane(PaneSide::left)->attach(left);
        controller.pane(PaneSide::right)->attach(right);
        controller.attach(window);
    }

    ~MainWindowControllerTest() override
    {
        controller.pane(PaneSide::left)->detach(left);
        controller.pane(PaneSide::right)->detach(right);
        defaults.setText("TWAutoRefresh", "false"); // ends what the panes wait for
        auto const ended = loop.start(browser->shutdown());
        loop.drain();
        EXPECT_TRUE(ended.isDone());
        clock->advance(std::chrono::seconds(1));
        loop.drain();
    }

    void start(PaneSpec::Sides const &sides)
    {
        controller.start(sides);
        loop.drain();
        while (!provider->waiting.empty()) {
            auto const request = provider->takeOldest();
            request.answer->succeed({{request.path, listing(request.path, {file("a")}, clock->now())}});
            loop.drain();
        }
    }

    TestLoop loop;
    std::shared_ptr<ManualClock> clock = std::make_shared<ManualClock>();
    std::shared_ptr<ScriptedProvider> provider = std::make_shared<ScriptedProvider>();
    std::shared_ptr<Browser> browser = std::make_shared<Browser>(
        provider, Browser::Collaborators{Strand(loop.context()), clock, nullptr}, Browser::Config{});
    MemoryDefaults defaults;
    FakeConnections connections{browser};
    std::shared_ptr<FakeApplications> applications = std::make_shared<FakeApplications>();
    MainWindowController controller{
        {loop.context(), clock, defaults}, connections, nullptr, {.opening = {.applications = applications}}};
    RecordingDisplay left;
    RecordingDisplay right;
    RecordingWindow window;
};

} // namespace tw::test
