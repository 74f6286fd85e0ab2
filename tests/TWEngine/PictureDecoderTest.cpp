#include "TWEngine/Preview/PictureDecoder.h"

#include "TWCore/Async/Cancelled.h"
#include "TWEngine/Preview/PreviewFile.h"
#include "TWEngine/Runtime/EngineRuntime.h"
#include "tests/support/ChildProcessTest.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestLoop.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

#include <signal.h>
#include <sys/stat.h>

namespace tw::test {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;

/// Stands in for the decoder, and does what the format of its request says. It notes its process twice: when it has
/// been started, and when it has been asked.
constexpr auto fakeDecoder = R"script(#!/bin/sh
cd "$(dirname "$0")" && echo $$ >> started
request=$(dd bs=128 count=1 2>/dev/null)
[ -n "$request" ] || exit
echo $$ >> asked
case $request in
good*) printf 'picture 1 1 1 1\nrgba' ;;
draft*1) printf 'draft 1 1 9 9\nabcd'; until [ -e seen ]; do sleep 0.01; done; printf 'picture 1 1 9 9\nrgba' ;;
wrong*) printf 'rubbish\n'; exec sleep 1000 ;;
crash*) kill -SEGV $$ ;;
slow*) kill -ALRM $$ ;;
hang*) exec sleep 1000 ;;
esac
)script";

class PictureDecoderTest : public ::testing::Test {
protected:
    PictureDecoderTest()
    {
        auto const script = folder.file("decoder", fakeDecoder);
        ::chmod(script.c_str(), 0700);
    }

    ~PictureDecoderTest() override
    {
        decoder.reset();
        until([this] { return childrenOfOurs() == childrenBefore; });
    }

    void until(auto const &condition)
    {
        while (!condition())
            loop.run(engine.clock()->sleep(std::chrono::milliseconds(1)));
    }

    static FileDescriptor someFile() { return PreviewFile::inMemory("P6\n2 1\n255\nrgbRGB"); }

    PictureRequest request(std::string format) const
    {
        return {.format = std::move(format), .room = {.width = 20, .height = 10}};
    }

    PictureDecoder::Result decode(std::string format)
    {
        return loop.run(decoder->decode(someFile(), request(std::move(format))));
    }

    /// The processes that a file of the stand-in names.
    std::vector<pid_t> processesIn(std::string_view name) const
    {
        std::ifstream file(folder.path(name));
        return {std::istream_iterator<pid_t>(file), {}};
    }

    std::vector<pid_t> started() const { return processesIn("started"); }

    std::vector<pid_t> asked() const { return processesIn("asked"); }

    TemporaryFolder folder;
    std::set<pid_t> const childrenBefore = childrenOfOurs();
    EngineRuntime engine;
    TestLoop loop;
    std::shared_ptr<PictureDecoder> decoder =
        std::make_shared<PictureDecoder>(engine, PictureDecoder::Spare::kept, folder.path("decoder"));
};

TEST_F(PictureDecoderTest, aProcessWaitsForTheNextPictureAndDecodesIt)
{
    EXPECT_TRUE(decode("good"));
    EXPECT_TRUE(decoder->hasSpare());
    until([this] { return started().size() == 2; });
    EXPECT_EQ(decode("good")->pixels, "rgba");
    EXPECT_EQ(asked().size(), 2U);
    EXPECT_NE(asked()[0], asked()[1]) << "a process decodes one picture";
    EXPECT_THAT(started(), Contains(asked()[1]));
    until([this] { return started().size() == 3; });
    EXPECT_EQ(childrenOfOurs().size(), childrenBefore.size() + 1);
}

TEST_F(PictureDecoderTest, noProcessWaitsWhereNoneIsWanted)
{
    decoder = std::make_shared<PictureDecoder>(engine, PictureDecoder::Spare::none, folder.path("decoder"));
    EXPECT_TRUE(decode("good"));
    EXPECT_FALSE(decoder->hasSpare());
    EXPECT_EQ(childrenOfOurs(), childrenBefore);
}

TEST_F(PictureDecoderTest, theWaitingProcessEndsWhenNoPictureIsExpected)
{
    EXPECT_TRUE(decode("good"));
    decoder->endSpare();
    until([this] { return childrenOfOurs() == childrenBefore; });
    EXPECT_TRUE(decode("good")) << "and the next picture has one of its own";
}

/// With the real one, which has no process below it that keeps its socket.
TEST_F(PictureDecoderTest, aWaitingProcessThatWasKilledIsReplaced)
{
    decoder = std::make_shared<PictureDecoder>(engine, PictureDecoder::Spare::kept);
    ASSERT_TRUE(decode("ppm"));
    std::vector<pid_t> spares;
    std::ranges::set_difference(childrenOfOurs(), childrenBefore, std::back_inserter(spares));
    ASSERT_EQ(spares.size(), 1U);
    ::kill(spares[0], SIGKILL);
    until([this] { return childrenOfOurs() == childrenBefore; });
    EXPECT_TRUE(decode("ppm"));
    EXPECT_TRUE(decoder->hasSpare());
}

TEST_F(PictureDecoderTest, aPictureThatEndsItsProcessHarmsNoOther)
{
    EXPECT_TRUE(decode("good"));
    EXPECT_EQ(decode("crash").error(), PictureFailure::crashed);
    EXPECT_EQ(decode("wrong").error(), PictureFailure::crashed);
    EXPECT_EQ(decode("slow").error(), PictureFailure::tooSlow);
    EXPECT_EQ(decode("silent").error(), PictureFailure::crashed);
    EXPECT_TRUE(decode("good"));
}

TEST_F(PictureDecoderTest, theDraftIsShownWhileThePictureIsDecoded)
{
    auto wish = request("draft");
    wish.draft = PictureDraft::wanted;
    std::vector<std::string> shown;
    auto const picture = loop.run(decoder->decode(someFile(), wish, [&](Picture draft) {
        shown.push_back(draft.pixels);
        folder.file("seen"); // without which the picture does not come
    }));
    EXPECT_THAT(shown, ElementsAre("abcd"));
    EXPECT_EQ(picture->pixels, "rgba");
}

TEST_F(PictureDecoderTest, aStopEndsTheDecodingAndLeavesNothingOnceNoPictureIsExpected)
{
    EXPECT_TRUE(decode("good"));
    auto const decoding = loop.start(decoder->decode(someFile(), request("hang")));
    until([this] { return asked().size() == 2; });
    decoding.stop();
    decoder->endSpare();
    loop.runUntil([&] { return decoding.isDone(); });
    EXPECT_THROW(decoding.value(), Cancelled);
    EXPECT_FALSE(decoder->hasSpare());
    until([this] { return childrenOfOurs() == childrenBefore; });
}

TEST_F(PictureDecoderTest, aPictureThatIsGivenUpAtOnceLeavesNoProcess)
{
    for (int time = 0; time < 20; ++time) {
        auto const decoding = loop.start(decoder->decode(someFile(), request("hang")));
        if (time % 2 == 0)
            loop.drain();
        decoding.stop();
        decoder->endSpare();
        loop.runUntil([&] { return decoding.isDone(); });
        EXPECT_TRUE(decoding.failed());
        EXPECT_FALSE(decoder->hasSpare());
    }
    until([this] { return childrenOfOurs() == childrenBefore; });
}

TEST_F(PictureDecoderTest, noDescriptorStaysOpen)
{
    auto const openDescriptors = [] { return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {}); };
    auto const hasNoChild = [this] { return childrenOfOurs() == childrenBefore; };
    EXPECT_TRUE(decode("good"));
    decoder->endSpare();
    until(hasNoChild);
    auto const before = openDescriptors();
    for (auto const *const format : {"good", "crash", "wrong", "good"})
        static_cast<void>(decode(format));
    decoder->endSpare();
    until([&] { return hasNoChild() && openDescriptors() <= before; });
}

TEST_F(PictureDecoderTest, aDecoderThatIsNotThereIsAFailure)
{
    decoder = std::make_shared<PictureDecoder>(engine, PictureDecoder::Spare::kept, folder.path("missing"));
    EXPECT_EQ(decode("good").error(), PictureFailure::crashed);
    EXPECT_FALSE(decoder->hasSpare());
}

TEST_F(PictureDecoderTest, theRealOneDecodesInItsSpareToo)
{
    decoder = std::make_shared<PictureDecoder>(engine, PictureDecoder::Spare::kept);
    for (int time = 0; time < 3; ++time) {
        auto const picture = decode("ppm");
        ASSERT_TRUE(picture);
        EXPECT_EQ(picture->pixels, "rgb\xffRGB\xff");
        EXPECT_TRUE(decoder->hasSpare());
    }
    EXPECT_EQ(decode("nonsense").error(), PictureFailure::unknownFormat);
}

TEST_F(PictureDecoderTest, theRealOneEndsByItselfWhenItWillNotBeAsked)
{
    auto socket = FileHandover::create();
    ASSERT_TRUE(socket);
    auto const child = ChildProcess::start(
        engine.io(), {.program = DecoderProcess::installedProgram(), .input = DescriptorEnd{socket->childEnd().get()}});
    ASSERT_TRUE(child);
    socket->closeChildEnd();
    socket.reset(); // as the end of this program would
    auto const status = loop.run((*child)->wait());
    EXPECT_EQ(status.cause, ExitStatus::Cause::exited);
}

TEST(PictureRequestTest, arrivesAsItWasSent)
{
    PictureRequest const request{
        .format = "jpeg", .room = {.width = 640, .height = 480, .frames = 7}, .draft = PictureDraft::wanted};
    EXPECT_EQ(PictureRequest::of(request.line()), request);
    EXPECT_LT(request.line().size(), PictureRequest::mostBytes);
    for (auto const *const wrong : {"", "jpeg", "jpeg 640 480 7", "jpeg 640 480 7 x", "jpeg 640 480 7 1 more"})
        EXPECT_EQ(PictureRequest::of(wrong), std::nullopt) << wrong;
}

} // namespace
} // namespace tw::test
