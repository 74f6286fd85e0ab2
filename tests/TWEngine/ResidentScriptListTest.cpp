#include "TWCore/Model/ListingParser.h"
#include "TWCore/Provider/FileSystemProvider.h"
#include "tests/support/DiskRows.h"
#include "tests/support/Listings.h"
#include "tests/support/ResidentShellTest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace tw::test {
namespace {

using ListingParser::Completeness;
using ::testing::ElementsAre;
using ::testing::IsSupersetOf;
using ::testing::UnorderedElementsAre;
using ::testing::UnorderedElementsAreArray;
using enum ShellDialect;

std::set<std::string> pathsOf(Listings const &listings)
{
    std::set<std::string> paths;
    for (auto const &[path, snapshot] : listings)
        paths.insert(path);
    return paths;
}

Listings parsed(ShellReader::Frame const &frame, std::string const &root, int depth)
{
    EXPECT_EQ(frame.status, 0);
    return ListingParser::parse(std::make_shared<std::string const>(frame.payload), root, depth, {},
                                frame.truncated ? Completeness::truncated : Completeness::whole);
}

void setTime(std::string const &path, timespec time)
{
    std::array<timespec, 2> const times{time, time};
    if (utimensat(AT_FDCWD, path.c_str(), times.data(), AT_SYMLINK_NOFOLLOW) != 0)
        throw std::runtime_error("a time could not be set");
}

void setMode(std::string const &path, mode_t mode)
{
    if (chmod(path.c_str(), mode) != 0)
        throw std::runtime_error("a mode could not be set");
}

void makeSocket(std::string const &path)
{
    auto const socketEnd = FileDescriptor(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_un address = {.sun_family = AF_UNIX, .sun_path = {}};
    if (path.size() >= sizeof address.sun_path)
        throw std::runtime_error("the temporary folder lies too deep for a socket");
    path.copy(address.sun_path, path.size());
    if (bind(socketEnd.get(), reinterpret_cast<sockaddr const *>(&address), sizeof address) != 0)
        throw std::runtime_error("a socket could not be made");
}

enum class Lister { gnu, perl };

class ListerTest : public ResidentShellTest {
protected:
    void giveLister(Lister lister) const
    {
        if (lister == Lister::gnu) {
            give({"find"});
        } else {
            giveFindWithoutPrintf();
            give({"perl"});
        }
    }

    static Listings list(ResidentShell &resident, std::string const &path, int depth = 1)
    {
        return parsed(resident.answerTo(ShellRequest::list(posix, path, depth)), path, depth);
    }

    /// By a shell of its own.
    Listings list(std::string const &path, int depth = 1)
    {
        auto resident = shell();
        return list(resident, path, depth);
    }

    /// A file, and the folders that it lies in.
    void plant(std::string const &name, std::string_view content = {}) const
    {
        folder.folder(name.substr(0, name.rfind('/')));
        folder.file(name, content);
    }

    /// Everything that a folder can hold.
    void plantTree() const
    {
        folder.file("file", "12345");
        setTime(folder.path("file"), {.tv_sec = 1'700'000'000, .tv_nsec = 999'999'999});
        setMode(folder.path("file"), 06754);
        setTime(folder.file("old"), {.tv_sec = 0, .tv_nsec = 0});
        folder.folder("empty");
        setMode(folder.folder("shared"), 01777);
        plant("deep/1/2/3/4/bottom", "x");
        plant("deep/1/side");
        folder.link("toFolder", "deep");
        folder.link("toFile", "file");
        folder.link("toNothing", "missing");
        if (mkfifo(folder.path("fifo").c_str(), 0640) != 0)
            throw std::runtime_error("a fifo could not be made");
        makeSocket(folder.path("socket"));
    }
};

/// What holds for either lister.
class ResidentScriptListTest : public ListerTest, public ::testing::WithParamInterface<Lister> {
protected:
    ResidentScriptListTest() { giveLister(GetParam()); }
};

INSTANTIATE_TEST_SUITE_P(Listers, ResidentScriptListTest, ::testing::Values(Lister::gnu, Lister::perl),
                         [](auto const &lister) { return lister.param == Lister::gnu ? "gnu" : "perl"; });

TEST_P(ResidentScriptListTest, theListerThatWorksIsChosen)
{
    auto resident = shell();
    EXPECT_TRUE(resident.handshake().payload.starts_with(GetParam() == Lister::gnu ? "gnu\t" : "perl\t"));
}

TEST_P(ResidentScriptListTest, aListingIsWhatIsOnTheDiskDownToItsDepth)
{
    plantTree();
    auto resident = shell();
    for (int depth = 1; depth <= 6; ++depth)
        EXPECT_EQ(rowsOf(list(resident, folder.path(), depth), folder.path()), rowsOnDisk(folder.path(), depth))
            << depth;
}

TEST_P(ResidentScriptListTest, foldersWithinTheDepthHaveListingsEvenIfEmpty)
{
    plantTree();
    EXPECT_THAT(pathsOf(list(folder.path(), 1)), ElementsAre(folder.path()));
    EXPECT_THAT(pathsOf(list(folder.path(), 2)),
                UnorderedElementsAre(folder.path(), folder.path("empty"), folder.path("shared"), folder.path("deep")));
}

TEST_P(ResidentScriptListTest, namesAreAnyBytes)
{
    auto expected = hostileNames();
    for (int byte = 1; byte < 256; ++byte) {
        if (byte != '/')
            expected.push_back({'b', static_cast<char>(byte)});
    }
    for (auto const &name : expected)
        folder.file(name, "x");
    auto const listed = list(folder.path());
    EXPECT_THAT(names(listed.at(folder.path())), UnorderedElementsAreArray(expected));
    EXPECT_EQ(rowsOf(listed, folder.path()), rowsOnDisk(folder.path(), 1));
}

TEST_P(ResidentScriptListTest, foldersOfAnyNameAreListed)
{
    auto resident = shell();
    for (auto const &name : hostileNames()) {
        auto const path = folder.folder(name);
        plant(name + "/inside");
        EXPECT_THAT(names(list(resident, path).at(path)), ElementsAre("inside")) << ::testing::PrintToString(name);
    }
}

TEST_P(ResidentScriptListTest, aFolderWhoseWholeNameIsALineEndIsFoundByItsParent)
{
    plant("\n/inside");
    auto resident = shell();
    EXPECT_EQ(rowsOf(list(resident, folder.path(), 2), folder.path()), rowsOnDisk(folder.path(), 2));
    // When perl takes slashes off the end of a root, it takes the one before a last line end for one of them.
    auto const asRoot = list(resident, folder.path("\n"));
    EXPECT_EQ(asRoot.at(folder.path("\n")).count(), GetParam() == Lister::gnu ? 1U : 0U);
}

TEST_P(ResidentScriptListTest, aRootThatIsALinkIsListedThroughAndOneBelowItIsALink)
{
    plantTree();
    auto resident = shell();
    auto const link = folder.path("toFolder");
    auto const listed = list(resident, link, 6);
    EXPECT_EQ(rowsOf(listed, link), rowsOnDisk(folder.path("deep"), 6));
    EXPECT_TRUE(pathsOf(listed).contains(link + "/1/2")) << "paths are those that were asked for";

    for (auto const &row : rowsOf(list(resident, folder.path(), 6), folder.path())) {
        EXPECT_FALSE(row.path.starts_with("toFolder/")) << row.path;
        if (row.path == "toFolder") {
            EXPECT_EQ(row.kind, EntryKind::symlink);
        }
    }
}

TEST_P(ResidentScriptListTest, slashesBehindARootAreNoPartOfIt)
{
    plant("sub/inside");
    auto const listed = list(folder.path() + "//", 2);
    EXPECT_EQ(rowsOf(listed, folder.path()), rowsOnDisk(folder.path(), 2));
}

TEST_P(ResidentScriptListTest, theRootOfAllIsListed)
{
    EXPECT_THAT(names(list("/").at("/")), IsSupersetOf({"dev", "tmp", "usr"}));
}

TEST_P(ResidentScriptListTest, devicesAreToldApart)
{
    auto const listed = list("/dev");
    auto const rows = rowsOf(listed, "/dev");
    auto const isNull = [](Row const &row) { return row.path == "null"; };
    auto const null = std::ranges::find_if(rows, isNull);
    ASSERT_NE(null, rows.end());
    EXPECT_EQ(null->kind, EntryKind::charDev);
}

TEST_P(ResidentScriptListTest, whatCannotBeReadIsAnEmptyListingAndNoFailure)
{
    plant("closed/inside");
    plant("open/inside");
    setMode(folder.path("closed"), 0);
    auto resident = shell();
    for (auto const &path : {folder.path("closed"), folder.path("missing"), folder.path("open/inside")}) {
        auto const listed = list(resident, path);
        EXPECT_THAT(pathsOf(listed), ElementsAre(path));
        EXPECT_EQ(listed.at(path).count(), 0U);
    }
    auto const around = list(resident, folder.path(), 2);
    EXPECT_EQ(around.at(folder.path("closed")).count(), 0U);
    EXPECT_EQ(around.at(folder.path("open")).count(), 1U);
    EXPECT_EQ(around.at(folder.path()).count(), 2U);
}

TEST_P(ResidentScriptListTest, aTreeOverTheBudgetIsCutInARecordAndTheSessionGoesOn)
{
    for (int index = 0; index < 600; ++index)
        plant("folder " + std::to_string(index % 30) + "/file " + std::to_string(index));
    auto const whole = shell().answerTo(ShellRequest::list(posix, folder.path(), 2)).payload;
    auto const lastRecord = whole.rfind('\0', whole.size() / 2) + 1;
    auto const budget = lastRecord + 3;
    ASSERT_LT(budget, whole.find('\0', lastRecord)) << "the budget is to end within a record";

    auto resident = shell(budget);
    auto const frame = resident.answerTo(ShellRequest::list(posix, folder.path(), 2));
    EXPECT_TRUE(frame.truncated);
    EXPECT_EQ(frame.payload, whole.substr(0, budget));

    auto const rows = rowsOf(parsed(frame, folder.path(), 2), folder.path());
    EXPECT_EQ(std::ssize(rows), std::ranges::count(frame.payload, '\0'));
    EXPECT_TRUE(std::ranges::includes(rowsOnDisk(folder.path(), 2), rows)) << "half a name is the name of another file";

    auto const small = folder.path("folder 1");
    EXPECT_EQ(rowsOf(list(resident, small), small), rowsOnDisk(small, 1));
}

TEST_P(ResidentScriptListTest, requestsThatWaitAreAnsweredInTheirOrder)
{
    plant("a/inside");
    auto resident = shell();
    std::string requests;
    for (std::uint64_t id = 100; id < 120; ++id)
        requests += ShellRequest::list(posix, folder.path(id % 2 == 0 ? "a" : "missing"), 1).numbered(id);
    resident.write(requests);
    for (std::uint64_t id = 100; id < 120; ++id) {
        auto const frame = resident.nextFrame();
        EXPECT_EQ(frame.id, id);
        EXPECT_EQ(frame.payload.empty(), id % 2 != 0);
    }
}

TEST_F(ListerTest, bothListersGiveEqualListings)
{
    plantTree();
    for (auto const &name : hostileNames())
        plant(name + '/' + name);
    giveLister(Lister::gnu);
    auto const byFind = list(folder.path(), 4);
    giveLister(Lister::perl);
    auto const byPerl = list(folder.path(), 4);
    EXPECT_EQ(pathsOf(byPerl), pathsOf(byFind));
    EXPECT_EQ(rowsOf(byPerl, folder.path()), rowsOf(byFind, folder.path()));
    EXPECT_FALSE(byPerl.empty());
}

TEST_F(ListerTest, withoutAnyListerEveryListingIsEmptyAndNoFailure)
{
    folder.file("a");
    auto resident = shell();
    EXPECT_TRUE(resident.handshake().payload.starts_with("perl\t")) << "there is nothing else to try";
    auto const frame = resident.answerTo(ShellRequest::list(posix, folder.path(), 1));
    EXPECT_EQ(frame, (ShellReader::Frame{1, 0, "", false}));
    EXPECT_EQ(resident.answerTo(ShellRequest::run(posix, "echo on")).payload, "on\n");
}

} // namespace
} // namespace tw::test
