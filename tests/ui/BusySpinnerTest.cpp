#include "Tarnwick/Toolkit/Widgets/BusySpinner.h"

#include "TWEngine/Runtime/EngineRuntime.h"
#include "Tarnwick/Toolkit/Program/QtMainContext.h"
#include "Tarnwick/Toolkit/Widgets/PathField.h"
#include "Tarnwick/Toolkit/Windows/PaneView.h"
#include "tests/support/Listings.h"
#include "tests/support/ScriptedProvider.h"
#include "tests/ui/QtLoop.h"

#include <gtest/gtest.h>

namespace tw::test {
namespace {

QImage pictureOf(QWidget &widget)
{
    return widget.grab().toImage();
}

TEST(BusySpinnerTest, showsNothingUntilItSpinsAndNothingAfterwards)
{
    BusySpinner spinner;
    spinner.resize(spinner.sizeHint());
    auto const still = pictureOf(spinner);
    spinner.start();
    EXPECT_TRUE(spinner.isSpinning());
    EXPECT_NE(pictureOf(spinner), still);
    spinner.stop();
    EXPECT_FALSE(spinner.isSpinning());
    EXPECT_EQ(pictureOf(spinner), still);
}

TEST(BusySpinnerTest, turns)
{
    BusySpinner spinner;
    spinner.resize(spinner.sizeHint());
    spinner.show();
    spinner.start();
    auto const first = pictureOf(spinner);
    processUntil([&] { return pictureOf(spinner) != first; });
}

/// A pane on a host that answers when the test says so.
class BusyPaneTest : public ::testing::Test {
protected:
    ~BusyPaneTest() override
    {
        view.reset();
        auto isDone = false;
        auto const shutDown = [](std::shared_ptr<Browser> ending, bool *done) -> Task<void> {
            co_await ending->shutdown();
            *done = true;
        };
        spawn({main.context(), {}}, shutDown(browser, &isDone));
        processUntil([&] { return isDone; });
    }

    BusySpinner &spinner() { return view->pathField().spinner(); }

    EngineRuntime runtime;
    QtMainContext main;
    MemoryDefaults defaults;
    PaneIcons icons;
    std::shared_ptr<ScriptedProvider> provider = std::make_shared<ScriptedProvider>();
    std::shared_ptr<Browser> browser = std::make_shared<Browser>(
        provider, Browser::Collaborators{Strand(main.context()), runtime.clock(), nullptr}, Browser::Config{});
    std::shared_ptr<PaneController> pane =
        PaneController::create({main.context(), runtime.clock(), defaults}, browser, "host");
    std::unique_ptr<PaneView> view = std::make_unique<PaneView>(pane, defaults, icons);
};

TEST_F(BusyPaneTest, aSlowFolderMakesThePaneSpinUntilItIsThere)
{
    view->show();
    pane->navigate("/slow");
    processUntil([&] { return spinner().isSpinning(); });
    processUntil([&] { return !provider->waiting.empty(); });
    auto const request = provider->takeOldest();
    request.answer->succeed({{"/slow", listing("/slow", {file("a")})}});
    processUntil([&] { return !spinner().isSpinning(); });
    EXPECT_EQ(pane->model().rowCount(), 2);
}

} // namespace
} // namespace tw::test
