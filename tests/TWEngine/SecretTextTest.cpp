#include "TWEngine/Passwords/SecretText.h"

#include <gtest/gtest.h>

#include <utility>

namespace tw::test {
namespace {

TEST(SecretTextTest, itIsTheTextThatItWasGiven)
{
    EXPECT_EQ(SecretText("secret").text(), "secret");
    EXPECT_EQ(SecretText("").text(), "");
    EXPECT_EQ(SecretText(std::string_view("a\0b", 3)).text(), std::string_view("a\0b", 3));
}

TEST(SecretTextTest, aMoveMovesNoBytes)
{
    SecretText first("secret");
    auto const *const bytes = first.text().data();
    SecretText second(std::move(first));
    EXPECT_EQ(second.text(), "secret");
    EXPECT_EQ(second.text().data(), bytes);
    SecretText third("another");
    third = std::move(second);
    EXPECT_EQ(third.text().data(), bytes);
}

} // namespace
} // namespace tw::test
