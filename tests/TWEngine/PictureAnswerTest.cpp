#include "TWEngine/Preview/PictureAnswer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tw::test {
namespace {

using namespace std::string_literals;

constexpr PictureBounds roomOfAnswer{.width = 20, .height = 10};

std::expected<Picture, PictureFailure> pictureAnswerOf(std::string const &bytes, std::size_t step = 1)
{
    PictureAnswer answer(roomOfAnswer);
    for (std::size_t at = 0; at < bytes.size(); at += step)
        static_cast<void>(answer.take(std::string_view(bytes).substr(at, step)));
    return std::move(answer).finish();
}

TEST(PictureAnswerTest, aPictureIsWholeWhateverThePiecesItComesIn)
{
    std::string const pixels = "rgbaRGBA"s;
    for (std::size_t const step : {1U, 3U, 7U, 100U}) {
        auto const picture = pictureAnswerOf("picture 2 1 4000 2000\n" + pixels, step);
        ASSERT_TRUE(picture) << step;
        EXPECT_EQ(picture->pixels, pixels);
        EXPECT_EQ(picture->width, 2);
        EXPECT_EQ(picture->height, 1);
        EXPECT_EQ(picture->wholeWidth, 4000);
        EXPECT_EQ(picture->wholeHeight, 2000);
    }
}

TEST(PictureAnswerTest, aPictureThatMovesHasItsFramesAndTheirTimes)
{
    PictureBounds const moving{.width = 20, .height = 10, .frames = 2};
    auto const taken = [](PictureBounds room, std::string const &bytes, std::size_t step) {
        PictureAnswer answer(room);
        for (std::size_t at = 0; at < bytes.size(); at += step)
            static_cast<void>(answer.take(std::string_view(bytes).substr(at, step)));
        return std::move(answer).finish();
    };
    auto const two = "moving 1 1 4 4\n0000050\nrgba0000100\nRGBA"s;
    for (std::size_t const step : {1U, 5U, 100U}) {
        auto const picture = taken(moving, two, step);
        ASSERT_TRUE(picture) << step;
        EXPECT_EQ(picture->pixels, "rgba");
        EXPECT_EQ(picture->firstShownFor, std::chrono::milliseconds(50));
        ASSERT_EQ(picture->furtherFrames.size(), 1U);
        EXPECT_EQ(picture->furtherFrames[0].pixels, "RGBA");
        EXPECT_EQ(picture->furtherFrames[0].shownFor, std::chrono::milliseconds(100));
    }
    EXPECT_FALSE(taken(roomOfAnswer, two, 100)) << "only one frame was asked for";
    for (auto const &wrong : {two + "0000100\nRGBA", two + "0", two.substr(0, two.size() - 1), "moving 1 1 4 4\n"s,
                              "moving 1 1 4 4\n0000000\nrgba"s, "moving 1 1 4 4\n-000050\nrgba"s})
        EXPECT_FALSE(taken(moving, wrong, 3)) << wrong;
}

std::string const draftAnswer = "draft 1 1 4000 2000\nabcd"s;
std::string const sharpAnswer = "picture 2 1 4000 2000\nrgbaRGBA"s;

TEST(PictureAnswerTest, aDraftIsThereBeforeThePictureWhateverThePiecesItComesIn)
{
    for (std::size_t const step : {1U, 3U, 7U, 100U}) {
        PictureAnswer answer(roomOfAnswer, PictureDraft::wanted);
        std::vector<Picture> drafts;
        auto const both = draftAnswer + sharpAnswer;
        for (std::size_t at = 0; at < both.size(); at += step) {
            EXPECT_TRUE(answer.take(std::string_view(both).substr(at, step))) << step;
            if (auto draft = answer.takeDraft())
                drafts.push_back(*std::move(draft));
        }
        ASSERT_EQ(drafts.size(), 1U) << step;
        EXPECT_EQ(drafts[0].pixels, "abcd");
        EXPECT_EQ(drafts[0].width, 1);
        EXPECT_EQ(drafts[0].wholeWidth, 4000);
        auto const picture = std::move(answer).finish();
        ASSERT_TRUE(picture) << step;
        EXPECT_EQ(picture->pixels, "rgbaRGBA");
        EXPECT_EQ(picture->width, 2);
    }
}

TEST(PictureAnswerTest, aDraftIsNotThereBeforeItsLastByte)
{
    PictureAnswer answer(roomOfAnswer, PictureDraft::wanted);
    EXPECT_TRUE(answer.take(draftAnswer.substr(0, draftAnswer.size() - 1)));
    EXPECT_FALSE(answer.takeDraft());
    EXPECT_TRUE(answer.take("d"));
    EXPECT_TRUE(answer.takeDraft());
    EXPECT_FALSE(answer.takeDraft());
}

TEST(PictureAnswerTest, aPictureMayFailAfterItsDraft)
{
    PictureAnswer answer(roomOfAnswer, PictureDraft::wanted);
    EXPECT_TRUE(answer.take(draftAnswer + "nothing too-large\n"));
    EXPECT_TRUE(answer.takeDraft());
    EXPECT_EQ(std::move(answer).finish().error(), PictureFailure::tooLarge);
}

TEST(PictureAnswerTest, aDraftIsBelievedNoMoreThanAPicture)
{
    auto const failure = [](std::string const &bytes, PictureDraft asked) {
        PictureAnswer answer(roomOfAnswer, asked);
        static_cast<void>(answer.take(bytes));
        auto const picture = std::move(answer).finish();
        return picture ? std::optional<PictureFailure>() : picture.error();
    };
    EXPECT_EQ(failure(draftAnswer + sharpAnswer, PictureDraft::none), PictureFailure::crashed) << "none was asked for";
    EXPECT_EQ(failure(sharpAnswer, PictureDraft::wanted), std::nullopt) << "there need not be one";
    for (auto const &bytes :
         {draftAnswer, draftAnswer.substr(0, draftAnswer.size() - 1), draftAnswer + draftAnswer + sharpAnswer,
          draftAnswer + "x" + sharpAnswer, sharpAnswer + draftAnswer, "draft 21 1 21 1\n"s, "draft 1 0 1 1\n"s,
          "draft 1 1 1\nabcd"s + sharpAnswer, "drafts 1 1 1 1\nabcd"s + sharpAnswer, "draft\n"s + sharpAnswer,
          draftAnswer + "picture 2 1 4000 2000\nrgba"})
        EXPECT_EQ(failure(bytes, PictureDraft::wanted), PictureFailure::crashed) << bytes;
}

TEST(PictureAnswerTest, aReasonIsOneOfThoseThatADecoderGives)
{
    for (auto const reason :
         {PictureFailure::damaged, PictureFailure::tooLarge, PictureFailure::unknownFormat, PictureFailure::noProgram})
        EXPECT_EQ(pictureAnswerOf("nothing "s + std::string(wordOf(reason)) + "\n").error(), reason);
}

TEST(PictureAnswerTest, whateverElseADecoderSaysIsACrash)
{
    for (auto const &bytes :
         {""s, "\n"s, "picture 2 1 2 1"s, "picture 2 1 2 1\nrgba"s, "picture 2 1 2 1\nrgbaRGBAx"s,
          "picture 2 1 2\nrgba"s, "picture 0 1 2 1\n"s, "picture -1 1 2 1\n"s, "picture 21 1 21 1\n"s,
          "picture 1 11 1 11\n"s, "picture 2 1 2 1 \nrgbaRGBA"s, "picture  2 1 2 1\nrgbaRGBA"s,
          "picture 2 1 99999999999 1\nrgbaRGBA"s, "pictures 2 1 2 1\nrgbaRGBA"s, "nothing\n"s, "nothing \n"s,
          "nothing crashed\n"s, "nothing damaged\nmore"s, std::string(1000, 'x')}) {
        auto const picture = pictureAnswerOf(bytes);
        ASSERT_FALSE(picture) << bytes;
        EXPECT_EQ(picture.error(), PictureFailure::crashed) << bytes;
    }
}

TEST(PictureAnswerTest, moreThanWasAnnouncedIsNotTakenIn)
{
    PictureAnswer answer(roomOfAnswer);
    EXPECT_TRUE(answer.take("picture 1 1 1 1\n"));
    EXPECT_TRUE(answer.take("rgba"));
    EXPECT_FALSE(answer.take("r"));
    EXPECT_FALSE(answer.take("gba"));
}

} // namespace
} // namespace tw::test
