#include "Tarnwick/Preview/PreviewController.h"

#include "TWCore/Async/Outcome.h"
#include "TWCore/Model/ReadError.h"
#include "TWEngine/Runtime/Completion.h"
#include "tests/support/ManualClock.h"
#include "tests/support/TestLoop.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tw::test {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

/// A loader whose readings wait for the test.
class FakePreviewLoader final : public PreviewLoader {
public:
    struct Reading {
        std::string name;
        Show show;
        std::shared_ptr<Completion<Done>> end = std::make_shared<Completion<Done>>();
        bool goesOn = true;
    };

    Task<void> load(PreviewSubject subject, PictureBounds /*room*/, Show show) override
    {
        readings.push_back(std::make_shared<Reading>(subject.name, std::move(show)));
        return wait(readings.back());
    }

    void rest() override { ++rests; }

    std::vector<std::string> running() const
    {
        std::vector<std::string> names;
        for (auto const &each : readings) {
            if (each->goesOn)
                names.push_back(each->name);
        }
        return names;
    }

    std::vector<std::shared_ptr<Reading>> readings;
    int rests = 0;

private:
    static Task<void> wait(std::shared_ptr<Reading> reading)
    {
        auto const outcome = co_await outcomeOf(Completion<Done>::wait(reading->end));
        reading->goesOn = false;
        if (outcome.failure)
            std::rethrow_exception(outcome.failure);
    }
};

class FakePreviewDisplay final : public PreviewDisplay {
public:
    void openPreview(PaneSide where) override { over = where; }

    void closePreview() override { over.reset(); }

    void showPreview(PreviewContent const &content) override
    {
        auto const *const words = std::get_if<Text>(&content.body);
        shown.push_back(content.name + (words && words->isEmpty() ? "" : "!"));
        text = words ? words->english() : "";
    }

    PictureBounds previewRoom() const override { return {.width = 100, .height = 100}; }

    std::optional<PaneSide> over;
    std::vector<std::string> shown; ///< names; with a sign behind them if there was more than the name
    std::string text;
};

class PreviewControllerTest : public ::testing::Test {
protected:
    PreviewControllerTest() { controller->attach(display); }

    ~PreviewControllerTest() override
    {
        controller->detach();
        loop.drain();
        pass(std::chrono::seconds(1));
    }

    static PreviewSubject here(std::string name) { return {.path = "/" + name, .name = name, .kind = EntryKind::file}; }

    static PreviewSubject there(std::string name)
    {
        auto subject = here(std::move(name));
        subject.connection = "box";
        subject.isRemote = true;
        return subject;
    }

    void open(PreviewSubject subject)
    {
        controller->open(std::move(subject), PaneSide::right);
        loop.drain();
    }

    void follow(std::optional<PreviewSubject> subject)
    {
        controller->follow(std::move(subject), PaneSide::right);
        loop.drain();
    }

    void pass(std::chrono::milliseconds time)
    {
        clock->advance(time);
        loop.drain();
    }

    /// The reading that was begun last shows what it has, and ends.
    void answer()
    {
        auto const reading = loader->readings.back();
        reading->show({.name = reading->name, .body = "content"});
        reading->end->succeed({});
        loop.drain();
    }

    TestLoop loop;
    std::shared_ptr<ManualClock> clock = std::make_shared<ManualClock>();
    std::shared_ptr<FakePreviewLoader> loader = std::make_shared<FakePreviewLoader>();
    FakePreviewDisplay display;
    std::shared_ptr<PreviewController> controller = std::make_shared<PreviewController>(loop.context(), clock, loader);
};

TEST_F(PreviewControllerTest, opensOverASideAndShowsWhatIsRead)
{
    open(here("a"));
    EXPECT_EQ(display.over, PaneSide::right);
    answer();
    EXPECT_THAT(display.shown, ElementsAre("a!"));
    EXPECT_TRUE(controller->close());
    EXPECT_FALSE(display.over);
    EXPECT_FALSE(controller->close());
}

TEST_F(PreviewControllerTest, closingEndsTheReadingAndWhatItHadToShow)
{
    open(here("a"));
    auto const reading = loader->readings.back();
    controller->close();
    loop.drain();
    EXPECT_THAT(loader->running(), IsEmpty());
    reading->show({.name = "a", .body = "late"});
    EXPECT_THAT(display.shown, IsEmpty());
}

TEST_F(PreviewControllerTest, aHeldCursorLetsOneReadingFinishAndThenReadsTheNewest)
{
    open(here("a"));
    for (auto const *const name : {"b", "c", "d"})
        follow(here(name));
    EXPECT_THAT(loader->running(), ElementsAre("a"));
    answer();
    EXPECT_THAT(loader->running(), ElementsAre("d"));
    answer();
    EXPECT_THAT(display.shown, ElementsAre("a!", "d!"));
}

TEST_F(PreviewControllerTest, aReadingThatTheCursorHasLeftIsGivenUpAfterAMoment)
{
    open(here("a"));
    follow(here("b"));
    pass(PreviewController::patienceWithOld / 2);
    follow(here("c"));
    EXPECT_THAT(loader->running(), ElementsAre("a"));
    pass(PreviewController::patienceWithOld / 2); // since it was left, and not since the last key
    EXPECT_THAT(loader->running(), ElementsAre("c"));
}

TEST_F(PreviewControllerTest, aReadingThatTheCursorHasLeftEndsWithItsFirstPicture)
{
    open(here("a"));
    follow(here("b"));
    loader->readings.back()->show({.name = "a", .body = "draft", .detail = PreviewContent::Detail::little});
    loop.drain();
    EXPECT_THAT(display.shown, ElementsAre("a!"));
    EXPECT_THAT(loader->running(), ElementsAre("b"));
    loader->readings.back()->show({.name = "b", .body = "draft", .detail = PreviewContent::Detail::little});
    loop.drain();
    EXPECT_THAT(loader->running(), ElementsAre("b")) << "the cursor is still there";
}

TEST_F(PreviewControllerTest, aReadingThatHasShownItsFirstPictureEndsWhenTheCursorLeaves)
{
    open(here("a"));
    loader->readings.back()->show({.name = "a", .body = "draft", .detail = PreviewContent::Detail::little});
    follow(here("b"));
    EXPECT_THAT(loader->running(), ElementsAre("b"));
    follow(here("a"));
    answer();
    EXPECT_THAT(loader->running(), ElementsAre("a")) << "it had no more than that";
}

TEST_F(PreviewControllerTest, aFileThatIsWantedAgainWhileItsReadingIsGivenUpIsRead)
{
    open(there("a"));
    controller->follow(there("b"), PaneSide::right);
    controller->follow(there("a"), PaneSide::right);
    loop.drain();
    pass(PreviewController::rest);
    EXPECT_THAT(loader->running(), ElementsAre("a"));
}

TEST_F(PreviewControllerTest, aPanelThatIsClosedAndOpenedAtOnceReadsItsFile)
{
    open(here("a"));
    controller->close();
    open(here("a"));
    EXPECT_THAT(loader->running(), ElementsAre("a"));
}

TEST_F(PreviewControllerTest, aClosedPanelKeepsNothingReady)
{
    open(here("a"));
    EXPECT_EQ(loader->rests, 0);
    controller->close();
    EXPECT_EQ(loader->rests, 1);
}

TEST_F(PreviewControllerTest, aCursorThatComesBackFindsItsReadingGoingOn)
{
    open(here("a"));
    follow(here("b"));
    follow(here("a"));
    pass(std::chrono::seconds(1));
    EXPECT_THAT(loader->running(), ElementsAre("a"));
    EXPECT_EQ(loader->readings.size(), 1U);
}

TEST_F(PreviewControllerTest, aFileThatTakesLongHasItsNameOnShowMeanwhile)
{
    open(here("a"));
    answer();
    follow(here("b"));
    EXPECT_THAT(display.shown, ElementsAre("a!"));
    pass(PreviewController::silence);
    EXPECT_THAT(display.shown, ElementsAre("a!", "b"));
}

TEST_F(PreviewControllerTest, aHostIsAskedOnceTheCursorRestsAndNoLongerWhenItMovesOn)
{
    open(there("a"));
    EXPECT_THAT(loader->running(), ElementsAre("a"));
    follow(there("b"));
    EXPECT_THAT(loader->running(), IsEmpty());
    pass(PreviewController::rest / 2);
    follow(there("c"));
    pass(PreviewController::rest / 2);
    EXPECT_THAT(loader->running(), IsEmpty());
    pass(PreviewController::rest / 2);
    EXPECT_THAT(loader->running(), ElementsAre("c"));
}

TEST_F(PreviewControllerTest, aFailureIsSaidAndTheNextFileReadAllTheSame)
{
    open(here("a"));
    loader->readings.back()->end->fail(
        std::make_exception_ptr(ReadError::NotReadable("/a", "No such file or directory")));
    loop.drain();
    EXPECT_THAT(display.text, HasSubstr("No such file"));
    follow(here("b"));
    EXPECT_THAT(loader->running(), ElementsAre("b"));
}

TEST_F(PreviewControllerTest, theSameFileIsReadAgainOnlyIfItHasChanged)
{
    open(here("a"));
    answer();
    follow(here("a"));
    EXPECT_EQ(loader->readings.size(), 1U);
    auto changed = here("a");
    changed.mtime = 1;
    follow(changed);
    EXPECT_EQ(loader->readings.size(), 2U);
}

TEST_F(PreviewControllerTest, withoutAFileUnderTheCursorThePanelSaysSo)
{
    open(here("a"));
    answer();
    follow(std::nullopt);
    EXPECT_THAT(display.shown, ElementsAre("a!", "!"));
    EXPECT_EQ(display.text, "No file is under the cursor.");
    EXPECT_TRUE(controller->isOpen());
}

TEST_F(PreviewControllerTest, thePanelGoesToTheSideThatTheCursorHasLeft)
{
    open(here("a"));
    controller->follow(here("b"), PaneSide::left);
    EXPECT_EQ(display.over, PaneSide::left);
}

} // namespace
} // namespace tw::test
