#include "TWEngine/SSH/PrintedSettings.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tw::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Optional;
using testing::SizeIs;

HostSettings read(std::string const &printed)
{
    return PrintedSettings::read(printed, "/home/ann");
}

TEST(PrintedSettingsTest, aTimeOutIsSetIfItIsANumber)
{
    EXPECT_THAT(read("host box\nconnecttimeout 3\n").connectTimeout, Optional(std::chrono::seconds(3)));
    for (auto const *value : {"none", "0", "-1", "", "3x", "99999999999999999999"})
        EXPECT_EQ(read(std::string("connecttimeout ") + value + "\n").connectTimeout, std::nullopt) << value;
    EXPECT_LE(read("connecttimeout 2000000000\n").connectTimeout, std::chrono::hours(24));
}

TEST(PrintedSettingsTest, anSshThatKnowsSessionTypesPrintsTheOneOfTheHost)
{
    EXPECT_FALSE(read("host box\nrequesttty auto\n").knowsSessionType);
    EXPECT_TRUE(read("host box\nsessiontype none\n").knowsSessionType);
}

TEST(PrintedSettingsTest, aControlPathIsTakenAsItStands)
{
    EXPECT_THAT(read("controlpath /home/ann/.ssh/cm-box\n").controlPath,
                Optional(std::string("/home/ann/.ssh/cm-box")));
    EXPECT_EQ(read("controlpath none\n").controlPath, std::nullopt);
    EXPECT_EQ(read("controlmaster auto\n").controlPath, std::nullopt);
}

TEST(PrintedSettingsTest, aControlPathThatAnOptionWouldNeedInQuotesIsNotTaken)
{
    for (auto const *path : {"/a b", "/a\tb", "/a%b", "/${HOME}/a", "/a\"b", "/a'b", "/a\\b", "/a#b", "a"})
        EXPECT_EQ(read(std::string("controlpath ") + path + "\n").controlPath, std::nullopt) << path;
}

TEST(PrintedSettingsTest, identityFilesAreExpandedInTheirOrder)
{
    EXPECT_THAT(read("host box\nuser bob\nhostname box.example\nport 2222\n"
                     "identityfile ~/.ssh/id_rsa\nidentityfile %d/keys/%n-%h-%r-%p-%%\nidentityfile /keys/a b\n")
                    .identityFiles,
                ElementsAre("/home/ann/.ssh/id_rsa", "/home/ann/keys/box-box.example-bob-2222-%", "/keys/a b"));
}

TEST(PrintedSettingsTest, anIdentityFileThatOnlyAConnectionKnowsIsLeftOut)
{
    EXPECT_THAT(
        read("identityfile ~/%C\nidentityfile ~/a%\nidentityfile ~bob/key\nidentityfile pkcs11:x\n").identityFiles,
        IsEmpty());
}

TEST(PrintedSettingsTest, identityFilesAreBounded)
{
    std::string printed;
    for (int file = 0; file < 1000; ++file)
        printed += "identityfile /key" + std::to_string(file) + "\n";
    EXPECT_THAT(read(printed).identityFiles, SizeIs(PrintedSettings::mostIdentityFiles));
}

TEST(PrintedSettingsTest, whatIsNoSettingIsPassedOver)
{
    EXPECT_EQ(read("\n \nconnecttimeout\nnonsense\n\r\n"), HostSettings());
    EXPECT_EQ(read(""), HostSettings());
}

TEST(PrintedSettingsTest, theLogNamesTheFilesThatWereRead)
{
    EXPECT_THAT(PrintedSettings::filesIn("OpenSSH_9.2p1\r\n"
                                         "debug1: Reading configuration data /home/ann/.ssh/config\r\n"
                                         "debug1: /home/ann/.ssh/config line 1: Applying options for box\r\n"
                                         "debug1: Reading configuration data /home/ann/.ssh/more\r\n"),
                Optional(ElementsAre("/home/ann/.ssh/config", "/home/ann/.ssh/more")));
    EXPECT_THAT(PrintedSettings::filesIn(""), Optional(IsEmpty()));
}

TEST(PrintedSettingsTest, aNameThatMayBeCutOffIsNotTrusted)
{
    EXPECT_EQ(PrintedSettings::filesIn("debug1: Reading configuration data /" + std::string(199, 'x') + "\r\n"),
              std::nullopt);
}

} // namespace
} // namespace tw::test
