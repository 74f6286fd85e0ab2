#include "TWCore/Model/LocalName.h"

namespace tw::test {

TEST(LocalNameTest, slashesBecomeUnderscores)
{
    EXPECT_EQ(LocalName::safe("a/b"), "a_b");
    EXPECT_EQ(LocalName::safe("/"), "_");
    EXPECT_EQ(LocalName::safe("../../etc"), ".._.._etc");
}

TEST(LocalNameTest, whatNamesNoFileIsUntitled)
{
    EXPECT_EQ(LocalName::safe(""), "untitled");
    EXPECT_EQ(LocalName::safe("."), "untitled");
    EXPECT_EQ(LocalName::safe(".."), "untitled");
}

TEST(LocalNameTest, anyOtherNameStays)
{
    EXPECT_EQ(LocalName::safe("..."), "...");
    EXPECT_EQ(LocalName::safe(".profile"), ".profile");
    EXPECT_EQ(LocalName::safe("caf\xC3\xA9 \xFF"), "caf\xC3\xA9 \xFF");
}

} // namespace tw::test
