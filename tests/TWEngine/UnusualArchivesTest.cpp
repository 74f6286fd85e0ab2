// Archives that few programs make, and tools on an unusual machine.

#include "TWEngine/Archives/ArchiveChild.h"
#include "TWEngine/Archives/ArchiveProvider.h"
#include "TWEngine/Archives/RightsCleaning.h"
#include "tests/support/ArchiveTest.h"
#include "tests/support/Listings.h"
#include "tests/support/TarArchive.h"
#include "tests/support/ZipArchive.h"

namespace tw::test {
namespace unusualArchives {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

/// While it lives, gzip and cat can write no more than 64 KiB to a file, as on a disk that is nearly full.
class WithSmallFiles {
public:
    explicit WithSmallFiles(TemporaryFolder &programs)
    {
        for (std::string const name : {"gzip", "cat"}) {
            auto const path = programs.file(name, "#!/bin/bash\ntrap '' XFSZ\nulimit -f 64\nPATH=/usr/bin:/bin exec " +
                                                      name + " \"$@\"\n");
            ::chmod(path.c_str(), 0755);
        }
        ::setenv("PATH", (programs.path() + ":" + before).c_str(), 1);
    }

    ~WithSmallFiles() { ::setenv("PATH", before.c_str(), 1); }

    WithSmallFiles(WithSmallFiles const &) = delete;
    WithSmallFiles &operator=(WithSmallFiles const &) = delete;

private:
    std::string const before = std::getenv("PATH");
};

class UnusualArchivesTest : public ArchiveTest {
protected:
    std::string archive(std::string const &name) const { return folder.path(name); }

    std::shared_ptr<ArchiveProvider> opened(std::string const &name)
    {
        return std::make_shared<ArchiveProvider>(engine, ArchiveProvider::Archive{here(archive(name)), "local"},
                                                 tools().ssh);
    }

    /// A program that finds only 64 KiB of free space in the staging folder that it works in.
    std::string onSmallDisk(std::string const &program) const
    {
        auto const name = program.substr(program.rfind('/') + 1);
        auto const real = programs.folder(name + ".real");
        auto const path =
            programs.file(name, "#!/bin/sh\nfor a do case $a in *.tw-archive-*) d=$a;; esac; done\n"
                                "d=$(printf %s \"${d#-o}\" | sed 's,\\(\\.tw-archive-[^/]*\\).*,\\1,')\n"
                                "exec unshare --user --map-root-user --mount sh -c 'mount --bind \"$0\" " +
                                    real + " && mount -t tmpfs -o size=64k none \"$0\" && cp -a " + real +
                                    "/. \"$0\"/ && exec \"$@\"' " + "\"$d\" " + program + " \"$@\"\n");
        ::chmod(path.c_str(), 0755);
        return path;
    }

    ArchiveTools onSmallDisk(ArchiveTools found) const
    {
        found.tar = onSmallDisk(found.tar);
        found.bsdtar = onSmallDisk(found.bsdtar);
        found.sevenZip = onSmallDisk(found.sevenZip);
        return found;
    }

    TemporaryFolder programs;
};

TEST_F(UnusualArchivesTest, namesInOldCodePagesAreTheirBytes)
{
    // "größe" in CP437, "한글" in CP949, "日本" in Shift_JIS and, marked as such or not, in UTF-8.
    Names const names{"gr\x94\xE1"
                      "e",
                      "\xC7\xD1\xB1\xDB", "\x93\xFA\x96\x7B", "\xE6\x97\xA5", "\xE6\x9C\xAC"};
    std::vector<ZipArchive::Member> members;
    for (auto const &name : names)
        members.push_back({.name = name, .data = name});
    members[3].isMarkedAsUTF8 = true;
    folder.file("a.zip", ZipArchive::of(members));
    auto const inside = opened("a.zip");
    auto const listed = test::names(loop.run(inside->fetch("/", 1, FetchPriority::interactive)).at("/"));
    EXPECT_THAT(listed, testing::UnorderedElementsAreArray(names));
    for (auto const &name : names) {
        EXPECT_EQ(loop.run(inside->readChunk("/" + name, 0, 100)), name);
        EXPECT_EQ(extract({name}, here(archive("a.zip")), targetHere()), "done");
        EXPECT_EQ(contentOf(local.path(name)), name);
    }
    EXPECT_EQ(unpack(here(archive("a.zip")), here(local.path("out"))), "done");
    EXPECT_EQ(namesIn(local.path("out")), (std::set<std::string>(names.begin(), names.end())));
}

TEST_F(UnusualArchivesTest, aNameThatLooksLikeRowsOfAListingIsOneName)
{
    Names const names{"a\n-rw-r--r-- 0.0 5 2024-01-01 00:00:00 fake", "b\n-rw-r--r--  0 0 0 5 Jan  1 00:00 fake",
                      "\x1B[2J", "tab\there", "x link to y"};
    std::string bytes;
    for (auto const &name : names)
        bytes += TarArchive::member({.name = name, .data = "1"});
    bytes += TarArchive::member({.name = "two", .data = "1"}) + TarArchive::member({.name = "two", .data = "last"});
    folder.file("a.tar", bytes + TarArchive::end());
    shell("bsdtar --format zip -cf a.zip @a.tar");
    for (auto const *const name : {"a.tar", "a.zip"}) {
        auto const inside = opened(name);
        auto expected = names;
        expected.emplace_back("two");
        auto const listed = test::names(loop.run(inside->fetch("/", 1, FetchPriority::interactive)).at("/"));
        EXPECT_THAT(listed, testing::UnorderedElementsAreArray(expected)) << name;
        EXPECT_EQ(loop.run(inside->fileSize("/two")), 4) << name;
        ASSERT_EQ(unpack(here(archive(name)), here(local.path("out"))), "done") << name;
        EXPECT_EQ(namesIn(local.path("out")), (std::set<std::string>(expected.begin(), expected.end()))) << name;
        EXPECT_EQ(contentOf(local.path("out/two")), "last") << name;
        std::filesystem::remove_all(local.path("out"));
    }
}

TEST_F(UnusualArchivesTest, aNameThatNoSystemTakesLeavesNothing)
{
    std::string const name(5000, 'n');
    folder.file("a.tar",
                TarArchive::member({.name = "././@LongLink", .kind = 'L', .data = name + std::string(1, '\0')}) +
                    TarArchive::member({.name = name.substr(0, 100), .data = "1"}) +
                    TarArchive::member({.name = "ok"}) + TarArchive::end());
    auto const listed = loop.run(opened("a.tar")->fetch("/", 1, FetchPriority::interactive)).at("/");
    EXPECT_EQ(test::names(listed), Names{"ok"});
    EXPECT_THAT(unpack(here(archive("a.tar")), here(local.path("out"))), HasSubstr("File name too long"));
    EXPECT_THAT(arrived(), IsEmpty());
    EXPECT_EQ(extract({"ok"}, here(archive("a.tar")), targetHere()), "done");
}

TEST_F(UnusualArchivesTest, aFullDiskLeavesEverythingAsItWas)
{
    folder.folder("d");
    shell("head -c 400000 /dev/urandom > d/large; echo x > small; tar -czf a.tar.gz d; "
          "bsdtar --format zip -cf a.zip d; 7zz a -bd -bso0 a.7z d; 7zz a -bd -bso0 little.7z small");
    auto const small = onSmallDisk(archiveTools());
    // Each tool has words of its own for it.
    auto const full =
        testing::AnyOf(HasSubstr("No space left on device"), HasSubstr("Wrote only"), HasSubstr("Write error"));
    for (auto const *const name : {"a.tar.gz", "a.zip", "a.7z"}) {
        EXPECT_THAT(unpack(here(archive(name)), here(local.path("out")), small), full) << name;
        EXPECT_THAT(extract({"d"}, here(archive(name)), targetHere(), small), full) << name;
        auto const format = detectArchiveFormat(name).value();
        EXPECT_THAT(pack({"d"}, sourceHere(), here(local.path(name)), format, small), full) << name;
        EXPECT_THAT(arrived(), IsEmpty()) << name;
    }
    auto const before = contentOf(archive("little.7z"));
    EXPECT_THAT(add({folder.path("d")}, archive("little.7z"), {}, small), full);
    EXPECT_TRUE(contentOf(archive("little.7z")) == before);
    EXPECT_THAT(namesIn(folder.path()), testing::Not(testing::Contains(StartsWith(".tw-archive-"))));
}

TEST_F(UnusualArchivesTest, aFullDiskLeavesATarAsItWas)
{
    folder.folder("d");
    shell("head -c 400000 /dev/urandom > d/large; echo x > small; tar -czf a.tar.gz small; tar -cf plain.tar small");
    WithSmallFiles const small(programs);
    for (auto const *const name : {"a.tar.gz", "plain.tar"}) {
        auto const before = contentOf(archive(name));
        EXPECT_THAT(add({folder.path("d")}, archive(name)), HasSubstr("File too large")) << name;
        EXPECT_TRUE(contentOf(archive(name)) == before) << name;
    }
    EXPECT_THAT(namesIn(folder.path()), testing::Not(testing::Contains(StartsWith(".tw-archive-"))));
}

TEST_F(UnusualArchivesTest, onlyFilesLoseTheRightToRunAsTheirOwner)
{
    auto const modeOf = [&](std::string const &path) {
        struct stat status;
        return ::stat(folder.path(path).c_str(), &status) == 0 ? status.st_mode & 07777U : 0;
    };
    folder.folder("d");
    folder.folder("d/shared");
    folder.file("d/shared/su", "x");
    folder.file("d/plain", "x");
    folder.file("outside", "x");
    folder.link("d/link", "../outside");
    ASSERT_EQ(::chmod(folder.path("d/shared").c_str(), 02770), 0);
    ASSERT_EQ(::chmod(folder.path("d/shared/su").c_str(), 06755), 0);
    ASSERT_EQ(::chmod(folder.path("d/plain").c_str(), 0640), 0);
    ASSERT_EQ(::chmod(folder.path("outside").c_str(), 04755), 0);
    EXPECT_TRUE(cleanRights(folder.path("d"), {}));
    EXPECT_EQ(modeOf("d/shared"), 02770U);
    EXPECT_EQ(modeOf("d/shared/su"), 0755U);
    EXPECT_EQ(modeOf("d/plain"), 0640U);
    EXPECT_EQ(modeOf("outside"), 04755U) << "a link is not followed";
}

TEST_F(UnusualArchivesTest, aTreeOfAnyDepthIsUnpacked)
{
    constexpr int levels = 500;
    std::string deep = "d";
    for (int level = 1; level < levels; ++level)
        deep += "/d";
    shell("mkdir -p " + deep + "; touch " + deep + "/f; chmod 4755 " + deep + "/f; tar -czf a.tar.gz d");
    EXPECT_FALSE(cleanRights(folder.path("d"), {})) << "more levels than this process has descriptors";
    EXPECT_EQ(unpack(here(archive("a.tar.gz")), here(local.path("out"))), "done");
    struct stat status;
    ASSERT_EQ(::stat((local.path("out/") + deep + "/f").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0755U);
}

TEST_F(UnusualArchivesTest, theToolsSpeakEnglishWhateverTheUserSpeaks)
{
    auto const made = ArchiveChild::environment({{"LANGUAGE", "ko"}, {"LC_ALL", "ko_KR.UTF-8"}, {"HOME", "/h"}});
    EXPECT_EQ(made.count("LANGUAGE"), 0U);
    EXPECT_EQ(made.at("LC_ALL"), "C.UTF-8");
    EXPECT_EQ(made.at("HOME"), "/h");
}

TEST_F(UnusualArchivesTest, aHardLinkComesOutWithItsContent)
{
    folder.folder("d");
    folder.file("a", "x");
    shell("ln a d/b; tar -czf a.tar.gz a d; tar -cf dot.tar ./a ./d");
    for (auto const *const name : {"a.tar.gz", "dot.tar"}) {
        Archives::Members const members{.paths = {"d/b"}, .contents = {"a"}};
        ASSERT_EQ(
            outcomeOf(loop.start(makeArchives()->extract(members, here(archive(name)), targetHere(), reporter()))),
            "done")
            << name;
        EXPECT_THAT(arrived(), testing::ElementsAre("b")) << name;
        EXPECT_EQ(contentOf(local.path("b")), "x") << name;
        std::filesystem::remove(local.path("b"));
    }
}

TEST_F(UnusualArchivesTest, anArchiveOfMoreThanAUserExpectsIsUnpackedOnlyIfTheUserWantsIt)
{
    shell("truncate -s 200G holes; tar -S -cJf a.tar.xz holes");
    EXPECT_THAT(unpack(here(archive("a.tar.xz")), here(local.path("out"))), StartsWith("unpacked it takes 200 GiB"));
    Archives::Members const members{.paths = {"holes"}, .bytes = std::int64_t{200} << 30U};
    EXPECT_THAT(
        outcomeOf(loop.start(makeArchives()->extract(members, here(archive("a.tar.xz")), targetHere(), reporter()))),
        StartsWith("unpacked it takes 200 GiB"));
    EXPECT_THAT(arrived(), IsEmpty());
    archives->takeAnySize();
    EXPECT_EQ(outcomeOf(loop.start(archives->unpack(here(archive("a.tar.xz")), here(local.path("out")), reporter()))),
              "done");
    EXPECT_EQ(std::filesystem::file_size(local.path("out/holes")), std::uintmax_t{200} << 30U);
}

} // namespace
} // namespace unusualArchives
} // namespace tw::test
