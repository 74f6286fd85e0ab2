#include "tests/support/ArchiveTest.h"
#include "tests/support/TarArchive.h"

namespace tw::test {
namespace archiveEngine {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

/// Names that some tool could take for an option, a pattern, a list or an escape.
std::vector<std::string> const oddNames{
    "*",        "[a]", "-r", "--checkpoint-action=x", "@x", "back\\nslash", "q?", "^x", "x$", "!x", "sp a",
    "\xC3\xA4", "a",   "x"};

/// Archives here, with each of the tools.
class ArchiveEngineTest : public ArchiveTest {
protected:
    static bool isStaging(std::string const &name) { return name.starts_with(".tw-archive-"); }

    void makeOddFiles()
    {
        for (auto const &name : oddNames)
            folder.file(name, name);
    }

    /// An archive, the tools that are there for it, and a name that they cannot treat as it is.
    struct Kind {
        std::string name;
        ArchiveTools tools;
        std::string except = {};

        Names names() const
        {
            auto all = oddNames;
            std::erase(all, except);
            return all;
        }
    };

    /// bsdtar takes a backslash in a zip for the slash that it is on Windows; zip spoils names that are not ASCII.
    std::vector<Kind> kinds()
    {
        auto const all = archiveTools();
        auto bsd = all;
        bsd.tar = bsd.bsdtar;
        auto infoZip = tools7();
        infoZip.sevenZip.clear();
        return {{"gnu.tar.gz", all},    {"bsd.tgz", bsd},
                {"plain.tar", all},     {"bsdtar.zip", all, "back\\nslash"},
                {"7zip.zip", tools7()}, {"info.zip", infoZip, "\xC3\xA4"},
                {"seven.7z", all}};
    }

    std::string archive(std::string const &name) const { return folder.path(name); }

    /// Packs all names of the source folder that are no archives.
    void makeArchive(std::string const &name, std::string const &names)
    {
        if (name.ends_with(".tar"))
            shell("tar -cf " + name + " -- " + names);
        else if (name.ends_with("gz"))
            shell("tar -czf " + name + " -- " + names);
        else
            shell("rm -f " + name + "; 7zz a -bd -bso0 -y -spd -snl -- " + name + " " + names);
    }

    static std::string quoted(Names const &names)
    {
        std::string list;
        for (auto const &name : names)
            list += " '" + name + "'";
        return list;
    }
};

TEST_F(ArchiveEngineTest, membersOfAnyNameComeOutAlone)
{
    makeOddFiles();
    for (auto const &kind : kinds()) {
        if (kind.name == "info.zip") // unzip unpacks whole archives only
            continue;
        makeArchive(kind.name, quoted(kind.names()));
        for (auto const &name : kind.names()) {
            ASSERT_EQ(extract({name}, here(archive(kind.name)), targetHere(), kind.tools), "done")
                << kind.name << " " << name;
            ASSERT_THAT(arrived(), testing::ElementsAre(name)) << kind.name;
            EXPECT_EQ(contentOf(local.path(name)), name) << kind.name;
            std::filesystem::remove(local.path(name));
        }
    }
}

TEST_F(ArchiveEngineTest, membersOfAnyNameAreRemovedAlone)
{
    makeOddFiles();
    for (auto const &kind : kinds()) {
        makeArchive(kind.name, quoted(kind.names()));
        auto left = kind.names().size();
        for (auto const &name : kind.names()) {
            if (--left == 0)
                break;
            ASSERT_EQ(remove({"/" + name}, archive(kind.name), kind.tools), "done") << kind.name << " " << name;
        }
        shell("bsdtar -tf " + kind.name + " > list");
        EXPECT_EQ(contentOf(folder.path("list")), oddNames.back() + "\n") << kind.name;
        auto const before = contentOf(archive(kind.name));
        EXPECT_THAT(remove({oddNames.back()}, archive(kind.name), kind.tools),
                    testing::AnyOf(HasSubstr("that would empty the archive — delete the file instead"),
                                   StartsWith("remove from archive failed on ")));
        EXPECT_EQ(contentOf(archive(kind.name)), before) << kind.name;
    }
}

TEST_F(ArchiveEngineTest, filesOfAnyNameAreAdded)
{
    makeOddFiles();
    for (auto const &kind : kinds()) {
        Names paths;
        for (auto const &name : kind.names())
            paths.push_back(folder.path(name));
        makeArchive(kind.name, "x");
        ::chmod(archive(kind.name).c_str(), 0640);
        ASSERT_EQ(add(paths, archive(kind.name), {}, kind.tools), "done") << kind.name;
        ASSERT_EQ(add({folder.file("new", "n")}, archive(kind.name), "/docs/deep/", kind.tools), "done") << kind.name;
        struct stat status;
        ASSERT_EQ(::stat(archive(kind.name).c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777U, 0640U);
        ASSERT_EQ(unpack(here(archive(kind.name)), here(local.path("out")), kind.tools), "done") << kind.name;
        auto const names = kind.names();
        auto expected = std::set<std::string>(names.begin(), names.end());
        expected.insert("docs");
        EXPECT_EQ(namesIn(local.path("out")), expected) << kind.name;
        EXPECT_EQ(contentOf(local.path("out/docs/deep/new")), "n") << kind.name;
        std::filesystem::remove_all(local.path("out"));
    }
}

TEST_F(ArchiveEngineTest, aChangedTarKeepsEverythingElseAsItWas)
{
    makeTree("tree");
    folder.file(std::string(200, 'l'), "a name that needs a description");
    folder.file("goes", "x");
    shell("chown 12345:54321 tree/large; truncate -s 1M sparse; printf x >> sparse");
    for (auto const *const format : {"gnu", "pax"}) {
        auto const rest = std::string(200, 'l');
        shell("tar -S --format=" + std::string(format) + " -czf a.tar.gz goes tree sparse " + rest);
        auto const list = "tar --numeric-owner --full-time -tvf a.tar.gz | tr -s ' ' | grep -v -e goes -e added";
        shell(std::string(list) + " > before");
        ASSERT_EQ(remove({"goes"}, archive("a.tar.gz")), "done") << format;
        ASSERT_EQ(add({folder.file("added", "y")}, archive("a.tar.gz"), "tree"), "done") << format;
        shell(std::string(list) + " > after");
        EXPECT_EQ(contentOf(folder.path("before")), contentOf(folder.path("after"))) << format;
        shell("tar -tzf a.tar.gz > list; rm -rf t; mkdir t; tar -xzf a.tar.gz -C t; cmp t/sparse sparse");
        EXPECT_THAT(contentOf(folder.path("list")),
                    testing::AllOf(HasSubstr("tree/added"), testing::Not(HasSubstr("goes"))));
    }
}

TEST_F(ArchiveEngineTest, whatSharesItsContentIsNotLost)
{
    folder.file("one", "x");
    shell("ln one two; tar -czf a.tar.gz one two");
    auto const before = contentOf(archive("a.tar.gz"));
    EXPECT_THAT(remove({"one"}, archive("a.tar.gz")), HasSubstr("two shares its content with one"));
    EXPECT_EQ(contentOf(archive("a.tar.gz")), before);
    EXPECT_EQ(remove({"two"}, archive("a.tar.gz")), "done");
}

TEST_F(ArchiveEngineTest, aMemberIsFoundUnderTheNameThatTheArchiveHas)
{
    folder.folder("docs");
    folder.file("docs/a", "x");
    shell("tar -czf dot.tar.gz ./docs; tar -cPzf root.tar.gz \"$PWD/docs\"");
    EXPECT_EQ(extract({"docs/a"}, here(archive("dot.tar.gz")), targetHere()), "done");
    EXPECT_EQ(contentOf(local.path("a")), "x");
    EXPECT_EQ(extract({folder.path("docs").substr(1)}, here(archive("root.tar.gz")), targetHere()), "done");
    EXPECT_EQ(contentOf(local.path("docs/a")), "x");
    EXPECT_THAT(extract({"none"}, here(archive("dot.tar.gz")), targetHere()), HasSubstr("ot found in archive"));
    EXPECT_EQ(arrived(), (std::set<std::string>{"a", "docs"}));
}

TEST_F(ArchiveEngineTest, aFileIsReplacedAndAFolderIsMerged)
{
    folder.folder("d");
    folder.file("d/both", "new");
    folder.file("d/link", "new");
    folder.file("f", "new");
    makeArchive("a.tar.gz", "d f");
    auto const victim = local.file("victim", "safe");
    local.folder("in");
    local.folder("in/d");
    local.file("in/d/both", "old");
    local.file("in/d/old", "old");
    local.link("in/d/link", victim);
    local.link("in/f", victim);
    EXPECT_EQ(extract({"d", "f"}, here(archive("a.tar.gz")), here(local.path("in"))), "done");
    EXPECT_EQ(namesIn(local.path("in")), (std::set<std::string>{"d", "f"}));
    EXPECT_EQ(namesIn(local.path("in/d")), (std::set<std::string>{"both", "old", "link"}));
    EXPECT_EQ(contentOf(local.path("in/d/both")), "new");
    EXPECT_EQ(contentOf(local.path("in/f")), "new");
    EXPECT_EQ(contentOf(victim), "safe");
}

TEST_F(ArchiveEngineTest, aFolderOfTheArchivesNameMakesNoSecondLevel)
{
    folder.folder("a");
    folder.file("a/x", "x");
    folder.file("b", "b");
    makeArchive("a.tar.gz", "a");
    makeArchive("a.zip", "a b");
    EXPECT_EQ(unpack(here(archive("a.tar.gz")), here(local.path("one"))), "done");
    EXPECT_EQ(namesIn(local.path("one")), std::set<std::string>{"x"});
    EXPECT_EQ(unpack(here(archive("a.zip")), here(local.path("two"))), "done");
    EXPECT_EQ(namesIn(local.path("two")), (std::set<std::string>{"a", "b"}));
    EXPECT_THAT(unpack(here(archive("a.zip")), here(local.path("two"))), HasSubstr("is there already"));
    EXPECT_EQ(arrived(), (std::set<std::string>{"one", "two"}));
    struct stat status;
    ASSERT_EQ(::stat(local.path("two").c_str(), &status), 0);
    EXPECT_NE(status.st_mode & 0077U, 0U) << "the folder stays closed to others";
}

TEST_F(ArchiveEngineTest, nothingIsWrittenOutsideWhateverIsInAnArchive)
{
    auto const victim = folder.file("victim", "safe");
    using Members = std::vector<TarArchive::Member>;
    std::map<std::string, Members> const archivesOf{
        {"dotdot", {{.name = "ok"}, {.name = "../evil", .data = "x"}}},
        {"absolute", {{.name = folder.path("evil"), .data = "x"}}},
        {"through", {{.name = "l", .kind = '2', .link = folder.path()}, {.name = "l/evil", .data = "x"}}},
        {"up", {{.name = "l", .kind = '2', .link = "../.."}, {.name = "l/evil", .data = "x"}}},
        {"chain",
         {{.name = "a", .kind = '2', .link = "."}, {.name = "a/b", .kind = '2', .link = ".."}, {.name = "a/b/evil"}}},
        {"hard", {{.name = "h", .kind = '1', .link = victim}, {.name = "h", .data = "bad"}}},
        {"over", {{.name = "l", .kind = '2', .link = victim}, {.name = "l", .data = "bad"}}},
    };
    for (auto const &[name, members] : archivesOf) {
        std::string bytes;
        for (auto const &member : members)
            bytes += TarArchive::member(member);
        folder.file(name + ".tar", bytes + TarArchive::end());
        // The same as a zip and a 7z, as far as these know such members: 7-Zip keeps names and links of a tar.
        shell("rm -rf x; mkdir x; bsdtar --format zip -cf " + name + ".zip @" + name + ".tar || :");
        for (auto const &kind : kinds()) {
            auto const ending = kind.name.substr(kind.name.rfind('.'));
            auto const file = archive(name + (ending == ".zip" ? ".zip" : ".tar"));
            auto const outside = namesIn(folder.path());
            local.folder("in");
            auto const outcome = unpack(here(file), here(local.path("in/out")), kind.tools);
            EXPECT_EQ(namesIn(folder.path()), outside) << name << " " << kind.name;
            EXPECT_EQ(contentOf(victim), "safe") << name << " " << kind.name;
            EXPECT_EQ(arrived(), std::set<std::string>{"in"}) << name << " " << kind.name;
            auto const expected = outcome == "done" ? std::set<std::string>{"out"} : std::set<std::string>{};
            EXPECT_EQ(namesIn(local.path("in")), expected) << name << " " << kind.name << ": " << outcome;
            std::filesystem::remove_all(local.path("in"));
        }
    }
}

TEST_F(ArchiveEngineTest, noFileGetsTheRightsOfItsOwnerAndNoDeviceIsMade)
{
    folder.file("s", "x");
    shell("chmod 6755 s; [ $(id -u) != 0 ] || mknod dev c 1 3; tar -cf a.tar $(ls s dev 2>/dev/null); "
          "bsdtar --format zip -cf a.zip @a.tar");
    for (auto const &kind : kinds()) {
        auto const file = archive(kind.name.ends_with(".zip") ? "a.zip" : "a.tar");
        ASSERT_EQ(unpack(here(file), here(local.path("out")), kind.tools), "done") << kind.name;
        struct stat status;
        ASSERT_EQ(::stat(local.path("out/s").c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 07000U, 0U) << kind.name;
        if (::lstat(local.path("out/dev").c_str(), &status) == 0)
            EXPECT_TRUE(S_ISREG(status.st_mode)) << kind.name; // what some tools make of a device
        std::filesystem::remove_all(local.path("out"));
    }
}

TEST_F(ArchiveEngineTest, aCancelLeavesEverythingAsItWas)
{
    folder.folder("d");
    shell("head -c 60M /dev/urandom > d/0");
    shell("tar -cf big.tar d; gzip -1c big.tar > big.tar.gz");
    auto const identity = [this] {
        struct stat status;
        EXPECT_EQ(::stat(archive("big.tar.gz").c_str(), &status), 0);
        return std::tuple(status.st_ino, status.st_size, status.st_mtim.tv_nsec);
    };
    auto const before = identity();
    folder.file("new", "x");
    auto const isStaged = [this] {
        return std::ranges::any_of(namesIn(folder.path()), isStaging) || std::ranges::any_of(arrived(), isStaging);
    };
    auto const cancelled = [this, isStaged](Task<void> work) {
        auto const started = loop.start(std::move(work));
        waitUntil([&] { return isStaged() || started.isDone(); });
        archives->cancel();
        EXPECT_EQ(outcomeOf(started), "cancelled");
        waitUntil([&] { return !isStaged(); });
        EXPECT_THAT(arrived(), IsEmpty());
    };
    auto const file = archive("big.tar.gz");
    cancelled(makeArchives()->unpack(here(file), here(local.path("out")), reporter()));
    cancelled(makeArchives()->extract({.paths = {"d"}}, here(file), targetHere(), reporter()));
    cancelled(
        makeArchives()->pack({"d"}, sourceHere(), here(local.path("a.tar.gz")), ArchiveFormat::tarGz, reporter()));
    cancelled(makeArchives()->pack({"d"}, sourceHere(), here(local.path("a.7z")), ArchiveFormat::sevenZip, reporter()));
    cancelled(makeArchives()->remove({"d/0"}, file, reporter()));
    cancelled(makeArchives()->add({folder.path("new")}, file, "", reporter()));
    EXPECT_EQ(identity(), before);
}

TEST_F(ArchiveEngineTest, aDamagedArchiveLeavesNothing)
{
    makeTree("tree");
    for (auto const *const name : {"a.tar.gz", "a.zip", "a.7z"}) {
        makeArchive(name, "tree/file tree/large");
        auto const whole = contentOf(archive(name));
        folder.file(name, whole.substr(0, whole.size() / 2));
        EXPECT_THAT(unpack(here(archive(name)), here(local.path("out"))), StartsWith("unpack failed on ")) << name;
        EXPECT_THAT(arrived(), IsEmpty()) << name;
        EXPECT_THAT(remove({"tree/file"}, archive(name)), StartsWith("remove from archive failed on ")) << name;
        EXPECT_TRUE(contentOf(archive(name)) == whole.substr(0, whole.size() / 2)) << name;
    }
}

TEST_F(ArchiveEngineTest, whatCannotBeDoneNamesThePackageThatIsMissing)
{
    folder.file("a", "x");
    folder.file("a.7z", "x");
    folder.file("a.zip", "x");
    ArchiveTools none;
    EXPECT_EQ(unpack(here(archive("a.7z")), here(local.path("o")), none),
              "not supported: this computer has no 7-Zip to open a .7z. Install the package 7zip.");
    EXPECT_EQ(
        extract({"a"}, here(archive("a.zip")), targetHere(), none),
        "not supported: this computer has no program to open this. Install the package libarchive-tools or 7zip.");
    EXPECT_THAT(pack({"a"}, sourceHere(), here(local.path("o.7z")), ArchiveFormat::sevenZip, none),
                HasSubstr("Install the package 7zip, or pack as tar.gz."));
    EXPECT_THAT(add({folder.path("a")}, archive("a.zip"), {}, none), HasSubstr("install the package 7zip or zip"));
    EXPECT_EQ(unpack(here(archive("a")), here(local.path("o"))), "not supported: a is not an archive this can open");
    EXPECT_EQ(remove({"a"}, archive("a")), "not supported: not an archive this app knows");
    EXPECT_THAT(arrived(), IsEmpty());
}

TEST_F(ArchiveEngineTest, whatIsPackedComesBackAsItWas)
{
    makeTree("tree");
    for (auto const &kind : kinds()) {
        auto const format = detectArchiveFormat(kind.name).value();
        if (format != ArchiveFormat::tarGz) // neither a socket nor a FIFO, no mode and no time of what they do not know
            continue;
        ASSERT_EQ(pack({"tree"}, sourceHere(), here(local.path(kind.name)), format, kind.tools), "done");
        ASSERT_EQ(unpack(here(local.path(kind.name)), here(local.path("out")), kind.tools), "done");
        EXPECT_EQ(contentOf(local.path("out/tree/large")), contentOf(folder.path("tree/large")));
        EXPECT_EQ(namesIn(local.path("out/tree")), namesIn(folder.path("tree")));
        std::filesystem::remove_all(local.path("out"));
        std::filesystem::remove(local.path(kind.name));
    }
    EXPECT_THAT(pack({"tree"}, sourceHere(), here(folder.path("tree/a.zip")), ArchiveFormat::zip),
                HasSubstr("which goes into it"));
    EXPECT_THAT(arrived(), IsEmpty());
}

} // namespace
} // namespace archiveEngine
} // namespace tw::test
