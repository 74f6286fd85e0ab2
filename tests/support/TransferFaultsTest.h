#pragma once

#include "TWEngine/Transfer/TransferEngine.h"
#include "tests/support/FakeCommandHost.h"
#include "tests/support/TransferTest.h"

#include <fstream>

namespace tw::test {

/// Copies over programs that fail on purpose: in place of ssh a script that runs the remote command on this machine.
/// Nothing measures: a command to the host is never answered.
class TransferFaultsTest : public TransferTest {
protected:
    TransferFaultsTest()
    {
        otherHost->name = "other";
        programs = TransferTools::find();
        programs.ssh = script("ssh", "for word; do :; done; exec sh -c \"$word\"");
    }

    /// A program of this shell text.
    std::string script(std::string const &name, std::string const &text)
    {
        auto const path = scripts.file(name, "#!/bin/sh\n" + text + "\n");
        ::chmod(path.c_str(), 0755);
        return path;
    }

    enum class Lines { both, source, target };

    /// Clients that lose their connections after so many bytes of what they carry.
    void cutAfter(std::size_t bytes, std::string const &end = "exit 255", Lines lines = Lines::both)
    {
        auto const head = "head -c " + std::to_string(bytes);
        auto const isCut = lines == Lines::both ? "*" : lines == Lines::source ? "*-cf*" : "*-xpf*";
        programs.ssh =
            script("ssh", "for word; do :; done\ncase $word in " + std::string(isCut) +
                              ") ;; *) exec sh -c \"$word\";; esac\ncase $word in\n*-cf*) sh -c \"$word\" | " + head +
                              " ;;\n*) " + head + " | sh -c \"$word\" ;;\nesac\n" + end);
    }

    std::string tarOf(std::string const &text) { return script("tar", text); }

    /// What of a tar was asked for: "-cf" or "-xpf".
    static std::string whenPacking(std::string const &text)
    {
        return "case $1 in -cf) " + text + ";; esac; exec tar \"$@\"";
    }

    static std::string whenUnpacking(std::string const &text)
    {
        return "case $1 in -xpf) " + text + ";; esac; exec tar \"$@\"";
    }

    TransferEndpoint sourceThere() const { return TransferEndpoint::remote(fakeHost, folder.path()); }

    TransferEndpoint targetThere() const { return TransferEndpoint::remote(otherHost, local.path()); }

    /// The ways of a stream: from here to a host, back, and from host to host.
    std::vector<std::pair<TransferEndpoint, TransferEndpoint>> streams() const
    {
        return {{sourceHere(), targetThere()}, {sourceThere(), targetHere()}, {sourceThere(), targetThere()}};
    }

    std::string carry(
        Names names, TransferEndpoint from, TransferEndpoint to,
        Transfer::Reporter reporter = [](TransferProgress const &) {})
    {
        transfer = std::make_shared<TransferEngine>(engine, programs);
        return outcomeOf(loop.start(transfer->copy(std::move(names), std::move(from), std::move(to), reporter)));
    }

    void emptyTarget() const
    {
        for (auto const &entry : std::filesystem::directory_iterator(local.path()))
            std::filesystem::remove_all(entry.path());
    }

    /// Two folders and two files, and how long their archive is.
    Names makeItems()
    {
        for (std::string const name : {"a", "d"}) {
            folder.folder(name);
            for (int index = 0; index < 5; ++index)
                folder.file(name + "/file " + std::to_string(index), std::string(3000, 'x'));
        }
        folder.file("b", std::string(100'000, 'y'));
        folder.file("c", "z");
        return {"a", "b", "c", "d"};
    }

    static constexpr std::size_t archiveBytes = 143'360;

    /// Fails the test unless the summary speaks the truth about the target, and the source is as it was.
    void expectTruth(Names const &names)
    {
        auto const summary = transfer->summary();
        SCOPED_TRACE("complete: " + testing::PrintToString(summary.complete) + ", words: " + summary.words);
        Names all = summary.complete;
        all.insert(all.end(), summary.partial.begin(), summary.partial.end());
        all.insert(all.end(), summary.untouched.begin(), summary.untouched.end());
        EXPECT_THAT(all, testing::UnorderedElementsAreArray(names));
        for (auto const &name : summary.complete)
            expectSame(name);
        for (auto const &name : summary.untouched)
            EXPECT_FALSE(std::filesystem::exists(local.path(name))) << name;
        EXPECT_LE(summary.files, filesThatAreWhole());
        EXPECT_EQ(namesIn(folder.path()), std::set<std::string>(names.begin(), names.end()));
    }

    std::int64_t filesThatAreWhole() const
    {
        std::int64_t count = 0;
        for (auto const &entry : std::filesystem::recursive_directory_iterator(local.path())) {
            auto const path = entry.path().string();
            auto const source = folder.path() + path.substr(local.path().size());
            count += entry.is_regular_file() && contentOf(path) == contentOf(source) ? 1 : 0;
        }
        return count;
    }

    TransferTools programs;
    std::shared_ptr<FakeCommandHost> fakeHost = std::make_shared<FakeCommandHost>();
    std::shared_ptr<FakeCommandHost> otherHost = std::make_shared<FakeCommandHost>();
    TemporaryFolder scripts;
};

} // namespace tw::test
