#include "TWEngine/Shell/ShellReader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

namespace tw::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Frame = ShellReader::Frame;

constexpr std::string_view nonce = "0123456789abcdef";
constexpr std::size_t budget = 100;

std::string frameText(std::string const &payload, std::string const &fields)
{
    return payload + "@@TW" + std::string(nonce) + ":" + fields + "@@\n";
}

std::vector<Frame> framesOf(std::vector<std::string_view> const &pieces)
{
    ShellReader reader(nonce, budget);
    std::vector<Frame> frames;
    for (auto const piece : pieces)
        std::ranges::move(reader.ingest(piece), std::back_inserter(frames));
    return frames;
}

std::vector<Frame> framesOf(std::string_view bytes)
{
    return framesOf(std::vector{bytes});
}

TEST(ShellReaderTest, aResponseIsItsPayloadIdAndStatus)
{
    EXPECT_THAT(framesOf(frameText("payload", "42:-3")), ElementsAre(Frame{42, -3, "payload", false}));
}

TEST(ShellReaderTest, thePayloadIsUnalteredWhateverIsInIt)
{
    std::string payload;
    for (int byte = 0; byte < 90; ++byte)
        payload += static_cast<char>(byte * 3);
    EXPECT_THAT(framesOf(frameText(payload, "1:0")), ElementsAre(Frame{1, 0, payload, false}));
}

TEST(ShellReaderTest, anEmptyPayloadIsAResponse)
{
    EXPECT_THAT(framesOf(frameText("", "1:0")), ElementsAre(Frame{1, 0, "", false}));
}

TEST(ShellReaderTest, twoResponsesInOneReadAreBothDeliveredInOrder)
{
    EXPECT_THAT(framesOf(frameText("one", "1:0") + frameText("two", "2:1")),
                ElementsAre(Frame{1, 0, "one", false}, Frame{2, 1, "two", false}));
}

TEST(ShellReaderTest, aStreamCutAtAnyTwoBytesGivesTheSameResponses)
{
    auto const bytes = frameText("@@TW not yet @@", "7:0") + frameText("@", "8:127") + "rest";
    for (std::size_t first = 0; first <= bytes.size(); ++first) {
        for (std::size_t second = first; second <= bytes.size(); ++second) {
            std::string_view const whole = bytes;
            auto const frames =
                framesOf({whole.substr(0, first), whole.substr(first, second - first), whole.substr(second)});
            ASSERT_EQ(frames.size(), 2U) << first << " " << second;
            EXPECT_EQ(frames[0].payload, "@@TW not yet @@");
            EXPECT_EQ(frames[1].id, 8U);
            // A line feed that comes after its response was taken stands before the next payload, which says so.
            EXPECT_EQ(frames[1].payload, frames[1].beginsWithLateLineFeed ? "\n@" : "@");
        }
    }
}

TEST(ShellReaderTest, aLineFeedIsTakenForALateOneOnlyWhereOneIsMissing)
{
    auto const second = frameText("\npayload", "2:0");
    // It came with its marker: the next line feed is the payload's.
    EXPECT_FALSE(framesOf({frameText("", "1:0"), second}).at(1).beginsWithLateLineFeed);
    // It came later: of the two the first.
    auto const first = frameText("", "1:0");
    auto const late = framesOf({first.substr(0, first.size() - 1), "\n", second});
    EXPECT_TRUE(late.at(1).beginsWithLateLineFeed);
    EXPECT_EQ(late.at(1).payload, "\n\npayload");
    // And only once.
    auto const third = framesOf({first.substr(0, first.size() - 1), "\n" + second, frameText("\n", "3:0")});
    EXPECT_FALSE(third.at(2).beginsWithLateLineFeed);
    // A host that sends none has none that is late.
    EXPECT_FALSE(framesOf({first.substr(0, first.size() - 1), frameText("x", "2:0")}).at(1).beginsWithLateLineFeed);
}

TEST(ShellReaderTest, aStreamThatArrivesByteByByteGivesItsResponses)
{
    ShellReader reader(nonce, budget);
    std::vector<Frame> frames;
    for (auto const byte : frameText("payload", "5:0"))
        std::ranges::move(reader.ingest({&byte, 1}), std::back_inserter(frames));
    EXPECT_THAT(frames, ElementsAre(Frame{5, 0, "payload", false}));
    EXPECT_EQ(reader.waiting(), "") << "the line feed that came late is no part of the next response";
    reader.ingest("next");
    EXPECT_EQ(reader.waiting(), "next");
}

TEST(ShellReaderTest, theMarkerOfAnotherSessionIsData)
{
    auto const payload = std::string("@@TWfedcba9876543210:1:0@@\n");
    EXPECT_THAT(framesOf(frameText(payload, "2:0")), ElementsAre(Frame{2, 0, payload, false}));
}

TEST(ShellReaderTest, aMarkerWithoutOrWithBadFieldsReadsAsZero)
{
    EXPECT_THAT(framesOf(frameText("p", "")), ElementsAre(Frame{0, 0, "p", false}));
    EXPECT_THAT(framesOf(frameText("p", "::")), ElementsAre(Frame{0, 0, "p", false}));
    EXPECT_THAT(framesOf(frameText("p", "x:y")), ElementsAre(Frame{0, 0, "p", false}));
    EXPECT_THAT(framesOf(frameText("p", "3")), ElementsAre(Frame{3, 0, "p", false}));
    EXPECT_THAT(framesOf(frameText("p", ":3::4:")), ElementsAre(Frame{3, 4, "p", false}));
    EXPECT_THAT(framesOf(frameText("p", "99999999999999999999:99999999999")), ElementsAre(Frame{0, 0, "p", false}));
}

TEST(ShellReaderTest, aPayloadThatReachesTheBudgetIsTruncated)
{
    auto const below = framesOf(frameText(std::string(budget - 1, 'x'), "1:0"));
    auto const at = framesOf(frameText(std::string(budget, 'x'), "1:0"));
    EXPECT_FALSE(below.at(0).truncated);
    EXPECT_TRUE(at.at(0).truncated);
    EXPECT_EQ(at.at(0).payload.size(), budget);
}

TEST(ShellReaderTest, whatHasNoMarkerYetWaits)
{
    ShellReader reader(nonce, budget);
    EXPECT_THAT(reader.ingest(std::string(1000, '@')), IsEmpty());
    EXPECT_EQ(reader.waiting().size(), 1000U);
    EXPECT_EQ(reader.ingest(frameText("", "1:0")).at(0).payload, std::string(1000, '@'));
}

TEST(ShellReaderTest, aMarkerWhoseEndIsLongInComingIsOneAllTheSame)
{
    ShellReader reader(nonce, budget);
    EXPECT_THAT(reader.ingest("payload@@TW" + std::string(nonce) + ":6:"), IsEmpty());
    for (int piece = 0; piece < 1000; ++piece)
        ASSERT_THAT(reader.ingest("0"), IsEmpty());
    EXPECT_THAT(reader.ingest("@"), IsEmpty());
    EXPECT_THAT(reader.ingest("@\n"), ElementsAre(Frame{6, 0, "payload", false}));
    EXPECT_EQ(reader.waiting().size(), 0U);
}

TEST(ShellReaderTest, theNextResponseIsFoundBehindTheOnesThatCameWithItsFirstBytes)
{
    auto const first = frameText("one", "1:0") + frameText("two", "2:0");
    auto const next = frameText("three", "3:0");
    for (std::size_t cut = 0; cut <= next.size(); ++cut) {
        ShellReader reader(nonce, budget);
        EXPECT_EQ(reader.ingest(first + next.substr(0, cut)).size(), cut + 1 < next.size() ? 2U : 3U) << cut;
        auto const rest = reader.ingest(next.substr(cut));
        if (cut + 1 < next.size()) {
            EXPECT_THAT(rest, ElementsAre(Frame{3, 0, "three", false})) << cut;
        }
    }
}

TEST(ShellReaderTest, aPayloadHasNoMoreMemoryThanItsBytes)
{
    ShellReader reader(nonce, budget);
    for (std::size_t const size : {1000U, 100'000U, 3'000'000U}) {
        auto const stream = frameText(std::string(size, 'x'), "1:0");
        std::string_view rest = stream;
        for (; rest.size() > 100; rest.remove_prefix(100))
            ASSERT_THAT(reader.ingest(rest.substr(0, 100)), IsEmpty());
        auto const frames = reader.ingest(rest);
        ASSERT_EQ(frames.size(), 1U);
        EXPECT_EQ(frames[0].payload.size(), size);
        EXPECT_EQ(frames[0].payload.capacity(), size);
    }
}

TEST(ShellReaderTest, anyStreamOfResponsesInAnyPiecesComesBackWhole)
{
    std::mt19937 random(20261121);
    std::string const alphabet("@TW:0\n\0x", 8);
    for (int round = 0; round < 500; ++round) {
        std::vector<std::string> payloads;
        std::string bytes;
        for (auto count = random() % 6; count > 0; --count) {
            std::string payload;
            for (auto length = random() % 60; length > 0; --length)
                payload += alphabet[random() % alphabet.size()];
            auto text = frameText(payload, std::to_string(payloads.size()) + ":0");
            text.pop_back(); // without its line feed, so that payloads compare equal however it is cut
            bytes += text;
            payloads.push_back(std::move(payload));
        }
        ShellReader reader(nonce, budget);
        std::vector<Frame> frames;
        for (std::string_view rest = bytes; !rest.empty();) {
            auto const length = std::min<std::size_t>(1 + random() % 40, rest.size());
            std::ranges::move(reader.ingest(rest.substr(0, length)), std::back_inserter(frames));
            rest.remove_prefix(length);
        }
        ASSERT_EQ(frames.size(), payloads.size());
        for (std::size_t index = 0; index < frames.size(); ++index) {
            EXPECT_EQ(frames[index].id, index);
            auto const &payload = payloads[index];
            // A payload that begins with a line feed may lose it to the response before it.
            EXPECT_TRUE(frames[index].payload == payload || "\n" + frames[index].payload == payload);
        }
    }
}

} // namespace
} // namespace tw::test
