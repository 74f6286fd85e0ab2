#include "Tarnwick/Settings/Defaults.h"

namespace tw::test {

TEST(MemoryDefaultsTest, aKeyThatWasNeverSetIsAbsent)
{
    EXPECT_EQ(MemoryDefaults().text("tw.any"), std::nullopt);
}

TEST(MemoryDefaultsTest, theLastTextOfAKeyStands)
{
    MemoryDefaults defaults;
    defaults.setText("tw.a", "1");
    defaults.setText("tw.b", "");
    defaults.setText("tw.a", "2");

    EXPECT_EQ(defaults.text("tw.a"), "2");
    EXPECT_EQ(defaults.text("tw.b"), "");
}

} // namespace tw::test
