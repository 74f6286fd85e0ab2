// Hosts whose tar is bsdtar, as those of BSD systems and of macOS.

#include "TWCore/Archives/ArchiveFailure.h"
#include "TWEngine/Archives/ArchiveProvider.h"
#include "tests/support/ArchiveTest.h"
#include "tests/support/Listings.h"

namespace tw::test {
namespace unusualTarHost {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;
using testing::UnorderedElementsAreArray;

/// Programs in that folder come before others of their names.
std::string loginWith(TemporaryFolder const &programs)
{
    return "#!/bin/sh\nPATH='" + programs.path() + "':$PATH\nexport PATH\nexec /bin/sh -c \"$SSH_ORIGINAL_COMMAND\"\n";
}

/// A host, which is this machine, with another tar. Its sessions have the C locale.
class UnusualTarHostTest : public ArchiveTest {
protected:
    /// `tar` notes the words of the tool as they come, and ends with it.
    UnusualTarHostTest()
    {
        auto const tar = programs.file("tar", "#!/bin/bash\n"
                                              "words=" +
                                                  programs.path("words") +
                                                  "\n"
                                                  "mkfifo $words.$$\n"
                                                  "tee -a $words <$words.$$ >&2 &\n"
                                                  "noting=$!\n" +
                                                  archiveTools().bsdtar +
                                                  " \"$@\" <&0 2>$words.$$ &\n"
                                                  "tool=$!\n"
                                                  "trap 'kill $tool' TERM\n"
                                                  "wait $tool; status=$?\n"
                                                  "wait $tool $noting; rm $words.$$; exit $status\n");
        std::filesystem::permissions(tar, std::filesystem::perms::owner_all);
        reach({.loginScript = loginWith(programs)});
        there = connected();
    }

    TransferEndpoint on(std::string path) const { return TransferEndpoint::remote(there, std::move(path)); }

    TransferEndpoint archive(std::string const &name) const { return on(folder.path(name)); }

    std::shared_ptr<ArchiveProvider> inside(TransferEndpoint file)
    {
        return std::make_shared<ArchiveProvider>(
            engine, ArchiveProvider::Archive{.file = std::move(file), .hostLabel = "x", .passwords = passwords},
            tools().ssh);
    }

    DirectorySnapshot listed(std::string const &name)
    {
        return loop.run(inside(archive(name))->fetch("/", 1, FetchPriority::interactive)).at("/");
    }

    Entry entryOf(DirectorySnapshot const &rows, std::string_view name)
    {
        for (auto const &entry : rows.entries()) {
            if (rows.nameBytes(entry) == name)
                return entry;
        }
        throw std::logic_error("no " + std::string(name));
    }

    /// Whoever opens the archives knows these passwords, one after the other.
    void know(Names next)
    {
        answers = std::move(next);
        passwords = std::make_shared<ArchivePasswords>([this](auto const &) {
            ArchivePasswords::Password answer;
            std::lock_guard const lock(asking);
            if (!answers.empty()) {
                answer = answers.front();
                answers.erase(answers.begin());
            }
            return given(std::move(answer));
        });
    }

    static Task<ArchivePasswords::Password> given(ArchivePasswords::Password password) { co_return password; }

    /// How often the tool has asked since the last look.
    std::size_t questions()
    {
        auto const words = programs.path("words");
        auto const count = std::filesystem::exists(words) ? ArchiveFailure::questionsIn(contentOf(words)) : 0;
        std::filesystem::remove(words);
        return count;
    }

    TemporaryFolder programs;
    Provider there;
    std::mutex asking;
    Names answers;
};

TEST_F(UnusualTarHostTest, membersHaveTheirSizesAndDates)
{
    folder.file("old", std::string(1234, 'x'));
    folder.file("new", std::string(70'000, 'x'));
    shell("touch -d '2020-01-01 10:00:00 UTC' old; truncate -s 5G holes; tar -Sczf a.tar.gz old new holes; "
          "bsdtar --format zip -cf a.zip old new");
    for (auto const *const name : {"a.tar.gz", "a.zip"}) {
        auto const rows = listed(name);
        EXPECT_EQ(entryOf(rows, "old").size, 1234) << name;
        EXPECT_EQ(entryOf(rows, "old").mtime, 1'577'836'800) << name << ": of an old member the day is listed";
        EXPECT_EQ(entryOf(rows, "new").size, 70'000) << name;
        EXPECT_GT(entryOf(rows, "new").mtime, 1'577'836'800) << name;
    }
    EXPECT_EQ(entryOf(listed("a.tar.gz"), "holes").size, std::int64_t{5} << 30U);
}

TEST_F(UnusualTarHostTest, namesOfAllLanguagesGoInAndOut)
{
    Names const names{"\xC3\xA4", "\xE6\x97\xA5\xE6\x9C\xAC", "*", "back\\slash", "plain", "line\nend"};
    for (auto const &name : names)
        folder.file(name, name);
    folder.folder("t");
    for (auto const &name : names)
        std::filesystem::rename(folder.path(name), folder.path("t/" + name));
    // A zip with a backslash is one of Windows.
    shell("cd t; bsdtar --format pax -czf ../pax.tar.gz -- ./*; tar -czf ../gnu.tar.gz -- ./*; rm back*; "
          "bsdtar --format zip -cf ../a.zip -- ./*; touch 'back\\slash'; printf '%s' 'back\\slash' > 'back\\slash'");
    for (auto const *const name : {"pax.tar.gz", "gnu.tar.gz", "a.zip"}) {
        auto expected = names;
        if (name == std::string_view("a.zip"))
            std::erase(expected, "back\\slash");
        EXPECT_THAT(test::names(listed(name)), UnorderedElementsAreArray(expected)) << name;
        for (auto const &member : expected) {
            EXPECT_EQ(loop.run(inside(archive(name))->readChunk("/" + member, 0, 100)), member) << name;
            ASSERT_EQ(extract({member}, archive(name), targetOn(there)), "done") << name << member;
            EXPECT_EQ(contentOf(local.path(member)), member) << name;
            std::filesystem::remove(local.path(member));
        }
        EXPECT_EQ(unpack(archive(name), on(local.path("out"))), "done") << name;
        EXPECT_THAT(namesIn(local.path("out")), UnorderedElementsAreArray(expected)) << name;
        std::filesystem::remove_all(local.path("out"));
    }
    // What comes from here and goes to here as a stream.
    EXPECT_EQ(unpack(here(folder.path("pax.tar.gz")), on(local.path("out"))), "done");
    EXPECT_THAT(namesIn(local.path("out")), UnorderedElementsAreArray(names));
    EXPECT_EQ(pack({"out"}, targetOn(there), here(folder.path("back.tar.gz")), ArchiveFormat::tarGz), "done");
    EXPECT_EQ(pack({"out"}, targetOn(there), on(folder.path("back.zip")), ArchiveFormat::zip), "done");
    EXPECT_EQ(unpack(here(folder.path("back.tar.gz")), here(local.path("back"))), "done");
    EXPECT_THAT(namesIn(local.path("back/out")), UnorderedElementsAreArray(names));
}

TEST_F(UnusualTarHostTest, aNameThatIsNoTextIsItsBytes)
{
    std::string const name = "b\xFF\xC3";
    folder.file(name, "x");
    shell("tar -czf a.tar.gz b*");
    EXPECT_EQ(test::names(listed("a.tar.gz")), Names{name});
    EXPECT_EQ(extract({name}, archive("a.tar.gz"), targetOn(there)), "done");
    EXPECT_THAT(arrived(), ElementsAre(name));
}

TEST_F(UnusualTarHostTest, anEncryptedArchiveIsAskedForItsPasswordOnce)
{
    folder.folder("t");
    folder.file("t/a", "content");
    shell("7zz a -bd -bso0 -psecret aes.zip -mem=AES256 t; zip -q -r -P secret old.zip t");
    for (auto const *const name : {"aes.zip", "old.zip"}) {
        know({});
        EXPECT_EQ(unpack(archive(name), on(local.path("out"))), "cancelled") << name;
        EXPECT_EQ(questions(), 1U) << name;
        EXPECT_THAT(arrived(), IsEmpty()) << name;
        know({"secret"});
        EXPECT_EQ(unpack(archive(name), on(local.path("out"))), "done") << name;
        EXPECT_EQ(contentOf(local.path("out/t/a")), "content") << name;
        EXPECT_EQ(questions(), 2U) << name << ": before the password was known, and when it was given";
        EXPECT_EQ(extract({"t/a"}, archive(name), targetHere()), "done") << name;
        EXPECT_EQ(loop.run(inside(archive(name))->readChunk("/t/a", 0, 100)), "content") << name;
        std::filesystem::remove_all(local.path("out"));
        std::filesystem::remove(local.path("a"));
        questions();
    }
    waitUntil([&] { return std::filesystem::is_empty(host->temporary()); });
}

TEST_F(UnusualTarHostTest, aWrongPasswordEndsTheTool)
{
    constexpr std::size_t asManyAsWithoutAnEnd = 10'000;
    folder.folder("t");
    folder.file("t/a", "content");
    shell("7zz a -bd -bso0 -psecret aes.zip -mem=AES256 t");
    know({"wrong", "secret"});
    EXPECT_EQ(unpack(archive("aes.zip"), on(local.path("out"))), "done");
    EXPECT_EQ(contentOf(local.path("out/t/a")), "content");
    EXPECT_LT(questions(), asManyAsWithoutAnEnd);
    EXPECT_THAT(arrived(), ElementsAre("out"));
    waitUntil([&] { return std::filesystem::is_empty(host->temporary()); });
}

TEST_F(UnusualTarHostTest, theWordsOfTheToolAreThoseOfAFailure)
{
    folder.file("a.tar.gz", "no archive");
    EXPECT_THAT(unpack(archive("a.tar.gz"), on(local.path("out"))), HasSubstr("Unrecognized archive format"));
    EXPECT_THAT(failureOf<Listings>(loop.start(inside(archive("a.tar.gz"))->fetch("/", 1, FetchPriority::interactive))),
                HasSubstr("Unrecognized archive format"));
    EXPECT_THAT(arrived(), IsEmpty());
}

/// The tar of a host: that of this machine, or bsdtar.
enum class Tar { usual, bsd };

class LargeOnHostTest : public ArchiveTest, public testing::WithParamInterface<Tar> {
protected:
    LargeOnHostTest()
    {
        if (GetParam() == Tar::bsd)
            std::filesystem::create_symlink(archiveTools().bsdtar, programs.path("tar"));
        reach({.loginScript = loginWith(programs)});
        there = connected();
    }

    TransferEndpoint on(std::string path) const { return TransferEndpoint::remote(there, std::move(path)); }

    TemporaryFolder programs;
    Provider there;
};

INSTANTIATE_TEST_SUITE_P(OfBothTars, LargeOnHostTest, testing::Values(Tar::usual, Tar::bsd));

TEST_P(LargeOnHostTest, moreThanAUserExpectsIsUnpackedOnlyIfTheUserWantsIt)
{
    shell("truncate -s 200G holes; tar -S -cJf a.tar.xz holes; tar -S -czf a.tar.gz holes; "
          "truncate -s 200M a.tar.gz"); // a length that does not rule it out
    for (auto const *const name : {"a.tar.xz", "a.tar.gz"}) {
        auto const archive = on(folder.path(name));
        EXPECT_THAT(unpack(archive, on(local.path("out"))), StartsWith("unpacked it takes 200 GiB")) << name;
        EXPECT_THAT(unpack(archive, here(local.path("out"))), StartsWith("unpacked it takes 200 GiB")) << name;
        Archives::Members const members{.paths = {"holes"}, .bytes = std::int64_t{200} << 30U};
        EXPECT_THAT(outcomeOf(loop.start(makeArchives()->extract(members, archive, targetOn(there), reporter()))),
                    StartsWith("unpacked it takes 200 GiB"));
        EXPECT_THAT(arrived(), IsEmpty()) << name;
    }
    makeArchives()->takeAnySize();
    EXPECT_EQ(outcomeOf(loop.start(archives->unpack(on(folder.path("a.tar.xz")), on(local.path("out")), reporter()))),
              "done");
    EXPECT_EQ(std::filesystem::file_size(local.path("out/holes")), std::uintmax_t{200} << 30U);
}

} // namespace
} // namespace unusualTarHost
} // namespace tw::test
