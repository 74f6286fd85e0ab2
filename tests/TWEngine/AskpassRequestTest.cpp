#include "TWEngine/Passwords/AskpassRequest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tw::test {
namespace {

using testing::Optional;

TEST(AskpassRequestTest, aRequestReadsBackAsItWas)
{
    for (auto const &request : {AskpassRequest{"token", "none", "two\nlines \xFF"}, AskpassRequest{"", "", ""}})
        EXPECT_THAT(AskpassRequest::decoded(request.encoded()), Optional(request));
}

TEST(AskpassRequestTest, aRequestIsWholeWithItsLastByte)
{
    auto const bytes = AskpassRequest{"token", "", "prompt"}.encoded();
    for (std::size_t length = 0; length < bytes.size(); ++length)
        EXPECT_EQ(AskpassRequest::decoded(bytes.substr(0, length)), std::nullopt) << length;
}

TEST(AskpassRequestTest, aLongPromptIsCutSoThatTheRequestStaysWhole)
{
    auto const bytes = AskpassRequest{"token", "none", std::string(100'000, 'x')}.encoded();
    EXPECT_EQ(bytes.size(), AskpassRequest::longest);
    EXPECT_EQ(AskpassRequest::decoded(bytes)->prompt, std::string(AskpassRequest::longest - 12, 'x'));
}

} // namespace
} // namespace tw::test
