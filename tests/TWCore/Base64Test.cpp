#include "TWCore/Shell/Base64.h"

#include <gtest/gtest.h>

#include <random>

namespace tw::test {
namespace {

TEST(Base64Test, knownBytesHaveTheirKnownText)
{
    EXPECT_EQ(Base64::encode(""), "");
    EXPECT_EQ(Base64::encode("f"), "Zg==");
    EXPECT_EQ(Base64::encode("fo"), "Zm8=");
    EXPECT_EQ(Base64::encode("foo"), "Zm9v");
    EXPECT_EQ(Base64::encode("foobar"), "Zm9vYmFy");
    EXPECT_EQ(Base64::encode("\xFB\xFF"), "+/8=");
}

TEST(Base64Test, anyBytesComeBack)
{
    std::mt19937 random(20261121);
    for (std::size_t length = 0; length < 300; ++length) {
        std::string bytes;
        for (std::size_t index = 0; index < length; ++index)
            bytes += static_cast<char>(random());
        EXPECT_EQ(Base64::decode(Base64::encode(bytes)), bytes);
    }
}

TEST(Base64Test, aTextIsOneLine)
{
    EXPECT_EQ(Base64::encode(std::string(3000, 'x')).find_first_of("\r\n"), std::string::npos);
}

TEST(Base64Test, aTextThatIsNotWhollyBase64IsNone)
{
    for (auto const *text : {"Zg", "Zg=", "Z===", "====", "=", "Zm9v ", "Zm 9v", "Zm9v\n",
                             "Zm9v-_==", "Zg==Zg==", "Zm=v", "Zm9v====", "\xFF\xFF\xFF\xFF"})
        EXPECT_EQ(Base64::decode(text), std::nullopt) << text;
}

} // namespace
} // namespace tw::test
