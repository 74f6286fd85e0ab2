#include "TWEngine/SSH/ControlPath.h"

#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

namespace tw::test {
namespace {

class ControlPathTest : public ::testing::Test {
protected:
    std::optional<std::string> make(std::string_view host = "a") const { return ControlPath::make(host, place); }

    std::string ownName() const { return ".tw-" + std::to_string(getuid()); }

    /// The folder of the sockets, made beforehand with this mode.
    void makeFolder(mode_t mode) const
    {
        auto const path = folder.folder(ownName());
        ASSERT_EQ(chmod(path.c_str(), mode), 0);
    }

    TemporaryFolder folder;
    ControlPath::Place place{.base = folder.path(), .user = getuid()};
};

TEST(ControlPathNameTest, aHostsSocketHasTheNameItAlwaysHad)
{
    EXPECT_EQ(ControlPath::socketName(""), "84222325");
    EXPECT_EQ(ControlPath::socketName("a"), "8601ec8c");
    EXPECT_EQ(ControlPath::socketName("user@host.example"), "b90a4f04");
    EXPECT_EQ(ControlPath::socketName("m\xC3\xBCller"), "2a67ae3c") << "bytes over 127 are not negative";
}

TEST(ControlPathNameTest, theFolderLiesBesideThoseOfOtherUsers)
{
    auto const place = ControlPath::Place::ofThisUser();
    EXPECT_EQ(place.base, "/tmp");
    EXPECT_EQ(place.user, getuid());
}

TEST_F(ControlPathTest, theFolderIsMadeAndIsPrivateWhateverTheUserLetsOthersDo)
{
    auto const before = umask(0);
    auto const path = make();
    umask(before);
    EXPECT_EQ(path, folder.path(ownName()) + "/8601ec8c");
    struct stat status;
    ASSERT_EQ(lstat(folder.path(ownName()).c_str(), &status), 0);
    EXPECT_EQ(status.st_mode, S_IFDIR | 0700U);
}

TEST_F(ControlPathTest, aFolderThatIsThereIsUsed)
{
    makeFolder(0700);
    folder.file(ownName() + "/8601ec8c");
    EXPECT_EQ(make("a"), folder.path(ownName()) + "/8601ec8c");
    EXPECT_EQ(make("b"), folder.path(ownName()) + "/" + ControlPath::socketName("b"));
}

TEST_F(ControlPathTest, aFolderWithARightForAnybodyElseIsNotUsed)
{
    for (mode_t const right : {0001U, 0002U, 0004U, 0010U, 0020U, 0040U}) {
        makeFolder(0700 | right);
        EXPECT_EQ(make(), std::nullopt) << right;
    }
    makeFolder(0700);
    EXPECT_NE(make(), std::nullopt);
}

TEST_F(ControlPathTest, aFolderOfAnotherUserIsNotUsed)
{
    auto const somebodyElse = getuid() + 1;
    auto const path = folder.folder(".tw-" + std::to_string(somebodyElse));
    ASSERT_EQ(chmod(path.c_str(), 0700), 0);
    place.user = somebodyElse;
    EXPECT_EQ(make(), std::nullopt);
}

TEST_F(ControlPathTest, aLinkIsNotFollowedWhereverItLeads)
{
    auto const target = folder.folder("elsewhere");
    ASSERT_EQ(chmod(target.c_str(), 0700), 0);
    folder.link(ownName(), target);
    EXPECT_EQ(make(), std::nullopt);
}

TEST_F(ControlPathTest, aLinkThatLeadsNowhereIsNotFilled)
{
    folder.link(ownName(), folder.path("elsewhere"));
    EXPECT_EQ(make(), std::nullopt);
    EXPECT_NE(access(folder.path("elsewhere").c_str(), F_OK), 0);
}

TEST_F(ControlPathTest, aFileIsNoFolder)
{
    ASSERT_EQ(chmod(folder.file(ownName()).c_str(), 0700), 0);
    EXPECT_EQ(make(), std::nullopt);
}

TEST_F(ControlPathTest, whatIsAboveTheFolderIsNotMade)
{
    place.base = folder.path("missing");
    EXPECT_EQ(make(), std::nullopt);
    EXPECT_NE(access(place.base.c_str(), F_OK), 0);
}

TEST_F(ControlPathTest, otherSocketsLieInTheFolderOfTheSession)
{
    ASSERT_EQ(chmod(folder.path().c_str(), 0700), 0);
    EXPECT_EQ(ControlPath::runtimeFolder(folder.path(), place), folder.path());
}

TEST_F(ControlPathTest, withoutASafeAndShortFolderOfTheSessionTheyLieBesideTheSharedConnections)
{
    auto const open = folder.folder("open");
    ASSERT_EQ(chmod(open.c_str(), 0750), 0);
    auto const longPath = folder.folder(std::string(80, 'x'));
    ASSERT_EQ(chmod(longPath.c_str(), 0700), 0);
    for (auto const &session : {open, longPath, folder.link("link", folder.path()), std::string("relative"),
                                std::string(), folder.path("none")})
        EXPECT_EQ(ControlPath::runtimeFolder(session, place), folder.path(ownName())) << session;
}

} // namespace
} // namespace tw::test
