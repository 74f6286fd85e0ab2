#include "Tarnwick/Toolkit/Program/QtDefaults.h"

#include "tests/support/TemporaryFolder.h"
#include "tests/ui/ScopedVariable.h"

#include <gtest/gtest.h>

#include <fstream>

namespace tw::test {
namespace {

class QtDefaultsTest : public ::testing::Test {
protected:
    /// What another object reads of a text that was stored.
    std::optional<std::string> storedAndRead(std::string const &value)
    {
        QtDefaults(fileName()).setText("tw.key", value);
        return QtDefaults(fileName()).text("tw.key");
    }

    QString fileName() const { return QString::fromStdString(folder.path("settings.ini")); }

    TemporaryFolder folder;
};

TEST_F(QtDefaultsTest, aKeyThatWasNeverSetHasNoText)
{
    EXPECT_EQ(QtDefaults(fileName()).text("tw.nothing"), std::nullopt);
}

TEST_F(QtDefaultsTest, textsOfAllKindsAreReadAsTheyWereStored)
{
    for (std::string const value :
         {"plain", "", " blanks ", "a, b", "semi;colon", "quote\"s", "back\\slash", "line\nbreak", "@At(sign)",
          "한국어 ä", "date:140 ext:60", "true", "12.5", "%percent%"})
        EXPECT_EQ(storedAndRead(value), value);
}

TEST_F(QtDefaultsTest, bytesThatAreNotUtf8AreReadAsTheyWereStored)
{
    EXPECT_EQ(storedAndRead("/srv/\xff\xfe/x"), "/srv/\xff\xfe/x");
    EXPECT_EQ(storedAndRead(std::string("nul\0byte", 8)), std::string("nul\0byte", 8));
}

TEST_F(QtDefaultsTest, aTextWithACommaThatSomebodyTypedIntoTheFileIsOneText)
{
    std::ofstream(folder.path("settings.ini")) << "[General]\ntw.key=a, b\n";
    EXPECT_EQ(QtDefaults(fileName()).text("tw.key"), "a, b");
}

TEST_F(QtDefaultsTest, theFileIsOneThatAPersonCanRead)
{
    QtDefaults(fileName()).setText("tw.columns", "date:140");
    EXPECT_NE(contentOf(folder.path("settings.ini")).find("tw.columns=date:140"), std::string::npos)
        << contentOf(folder.path("settings.ini"));
}

TEST_F(QtDefaultsTest, theUsersFileLiesInTheConfigurationFolder)
{
    ScopedVariable const variable("XDG_CONFIG_HOME", folder.path());
    QtDefaults().setText("tw.key", "value");
    EXPECT_NE(contentOf(folder.path("Tarnwick/Tarnwick.ini")).find("tw.key=value"), std::string::npos);
}

TEST_F(QtDefaultsTest, aFileThatIsNotWhollyAnIniFileIsKeptAside)
{
    std::string const text = "[General]\ntw.activeSide=right\nwhat is this\n";
    auto const file = folder.path("settings.ini");
    std::ofstream(file) << text;
    {
        QtDefaults defaults(fileName());
        EXPECT_EQ(defaults.text("tw.activeSide"), "right") << "what can be read counts";
        EXPECT_EQ(defaults.setAside(), file + ".broken");
        defaults.setText("tw.activeSide", "left");
    }
    EXPECT_EQ(contentOf(file + ".broken"), text);
    EXPECT_EQ(QtDefaults(fileName()).setAside(), "") << "the new file is whole";
}

} // namespace
} // namespace tw::test
