#include "tests/support/ArchiveTest.h"

namespace tw::test {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

/// Archives of a host, which is this machine.
class ArchiveHostTest : public ArchiveTest {};

TEST_F(ArchiveHostTest, anArchiveIsOpenedWhereItLies)
{
    reach();
    auto const provider = connected();
    Names const names{"*", "[a]", "-r", "@x", "back\\nslash", "it's", "\xC3\xA4", "a", "x"};
    for (auto const &name : names)
        folder.file(name, name);
    shell("tar -czf a.tar.gz -- *; tar -czf dot.tar.gz ./a ./x");
    auto const on = [&](std::string path) { return TransferEndpoint::remote(provider, std::move(path)); };
    for (auto const &name : names) {
        ASSERT_EQ(extract({name}, on(folder.path("a.tar.gz")), targetOn(provider)), "done") << name;
        EXPECT_EQ(arrived(), std::set<std::string>{name});
        EXPECT_EQ(contentOf(local.path(name)), name);
        std::filesystem::remove(local.path(name));
    }
    EXPECT_EQ(extract({"x"}, on(folder.path("dot.tar.gz")), targetOn(provider)), "done");
    EXPECT_EQ(unpack(on(folder.path("dot.tar.gz")), on(local.path("out"))), "done");
    EXPECT_EQ(namesIn(local.path("out")), (std::set<std::string>{"a", "x"}));
    EXPECT_THAT(unpack(on(folder.path("dot.tar.gz")), on(local.path("out"))), HasSubstr("is there already"));
    EXPECT_THAT(extract({"none"}, on(folder.path("dot.tar.gz")), targetOn(provider)), HasSubstr("ot found in archive"));
    EXPECT_EQ(arrived(), (std::set<std::string>{"out", "x"}));
    waitUntil([&] { return std::filesystem::is_empty(host->temporary()); });
}

TEST_F(ArchiveHostTest, anArchiveGoesFromMachineToMachine)
{
    reach();
    auto const provider = connected();
    auto const on = [&](std::string path) { return TransferEndpoint::remote(provider, std::move(path)); };
    makeTree("tree");
    EXPECT_EQ(pack({"tree"}, sourceHere(), on(local.path("up.tar.gz")), ArchiveFormat::tarGz), "done");
    EXPECT_EQ(pack({"tree"}, sourceOn(provider), here(local.path("down.tar.gz")), ArchiveFormat::tarGz), "done");
    EXPECT_EQ(pack({"tree"}, sourceOn(provider), on(local.path("there.tar.gz")), ArchiveFormat::tarGz), "done");
    EXPECT_EQ(arrived(), (std::set<std::string>{"up.tar.gz", "down.tar.gz", "there.tar.gz"}));
    for (auto const *const name : {"up", "down", "there"}) {
        auto const file = local.path(std::string(name) + ".tar.gz");
        EXPECT_EQ(unpack(on(file), here(local.path("here"))), "done");
        EXPECT_EQ(unpack(here(file), on(local.path("host"))), "done");
        for (auto const *const out : {"here", "host"}) {
            auto const tree = local.path(std::string(out) + "/tree");
            EXPECT_EQ(namesIn(tree), namesIn(folder.path("tree")));
            EXPECT_EQ(contentOf(tree + "/large"), contentOf(folder.path("tree/large")));
            std::filesystem::remove_all(local.path(out));
        }
    }
    EXPECT_EQ(extract({"tree/large", "tree/empty"}, on(local.path("up.tar.gz")), targetHere()), "done");
    EXPECT_EQ(contentOf(local.path("large")), contentOf(folder.path("tree/large")));
    EXPECT_TRUE(std::filesystem::is_directory(local.path("empty")));
    EXPECT_THAT(pack({"tree"}, sourceHere(), on(local.path("a.zip")), ArchiveFormat::zip),
                HasSubstr("packing to a different machine produces tar.gz"));
    EXPECT_THAT(pack({"none"}, sourceHere(), on(local.path("a.tar.gz")), ArchiveFormat::tarGz),
                StartsWith("read failed on none: "));
    EXPECT_EQ(arrived(), (std::set<std::string>{"up.tar.gz", "down.tar.gz", "there.tar.gz", "large", "empty"}));
    waitUntil([&] { return std::filesystem::is_empty(host->temporary()); });
}

TEST_F(ArchiveHostTest, aCancelEndsTheWorkOfAHost)
{
    reach();
    auto const provider = connected();
    folder.folder("d");
    shell("head -c 200M /dev/urandom > d/large");
    auto const started = loop.start(makeArchives()->pack({"d"}, sourceOn(provider),
                                                         TransferEndpoint::remote(provider, local.path("a.tar.gz")),
                                                         ArchiveFormat::tarGz, reporter()));
    waitUntil([&] { return !arrived().empty() || started.isDone(); });
    archives->cancel();
    EXPECT_EQ(outcomeOf(started), "cancelled");
    waitUntil([&] { return arrived().empty(); });
}

TEST_F(ArchiveHostTest, aCancelThatAHostDoesNotFollowIsNotCalledCancelled)
{
    TemporaryFolder const slow;
    ASSERT_EQ(::mkfifo(slow.path("wait").c_str(), 0600), 0);
    auto const tar = slow.file("tar", "#!/bin/sh\ncase \"$*\" in */archive.tar.gz*) : >" + slow.path("begun") +
                                          "; read line <" + slow.path("wait") + " ;; esac\nexec /bin/tar \"$@\"\n");
    ASSERT_EQ(::chmod(tar.c_str(), 0755), 0);
    reach({.loginScript = "#!/bin/sh\nPATH=" + slow.path() + ":$PATH exec /bin/sh -c \"$SSH_ORIGINAL_COMMAND\"\n"});
    auto const provider = connected();
    std::filesystem::remove(host->temporary());
    folder.file("a", "a");
    auto const archive = TransferEndpoint::remote(provider, local.path("a.tar.gz"));
    auto const started =
        loop.start(makeArchives()->pack({"a"}, sourceOn(provider), archive, ArchiveFormat::tarGz, reporter()));
    waitUntil([&] { return std::filesystem::exists(slow.path("begun")) || started.isDone(); });
    archives->cancel();
    EXPECT_EQ(outcomeOf(started), "the host may go on with it");
    std::ofstream(slow.path("wait")) << "\n";
    waitUntil([&] { return arrived().contains("a.tar.gz"); });
}

} // namespace
} // namespace tw::test
