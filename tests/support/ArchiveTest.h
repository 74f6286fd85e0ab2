#pragma once

#include "TWEngine/Archives/ArchiveEngine.h"
#include "TWEngine/Archives/LocalArchiveTools.h"
#include "tests/support/TransferTest.h"

namespace tw::test {

/// Tests of archives with the real tools: `folder` is the source, `local` the target.
class ArchiveTest : public TransferTest {
protected:
    /// Runs a command of a shell in the source folder, with the archive tools by their names.
    void shell(std::string const &command)
    {
        auto const whole = "cd '" + folder.path() +
                           "' && export LC_ALL=C.UTF-8 TAR_OPTIONS=--no-unquote && PATH=$PATH:" + toolFolder() +
                           " && { " + command + "; } >/dev/null";
        ASSERT_EQ(std::system(whole.c_str()), 0) << command;
    }

    ArchiveTools tools7() // without bsdtar
    {
        auto found = archiveTools();
        found.bsdtar.clear();
        return found;
    }

    /// Those of this machine, all of which the tests need.
    ArchiveTools archiveTools() { return loop.run(LocalArchiveTools::ofThisMachine(engine)); }

    std::string toolFolder()
    {
        auto const path = archiveTools().bsdtar;
        return path.substr(0, path.rfind('/'));
    }

    std::shared_ptr<ArchiveEngine> makeArchives(std::optional<ArchiveTools> with = {})
    {
        archives = with ? std::make_shared<ArchiveEngine>(engine, tools(), passwords, *with)
                        : std::make_shared<ArchiveEngine>(engine, tools(), passwords);
        return archives;
    }

    TransferEndpoint here(std::string path) const { return TransferEndpoint::local(std::move(path)); }

    std::string extract(Names members, TransferEndpoint archive, TransferEndpoint into,
                        std::optional<ArchiveTools> with = {})
    {
        return outcomeOf(
            loop.start(makeArchives(std::move(with))->extract({.paths = members}, archive, into, reporter())));
    }

    std::string unpack(TransferEndpoint archive, TransferEndpoint into, std::optional<ArchiveTools> with = {})
    {
        return outcomeOf(loop.start(makeArchives(std::move(with))->unpack(archive, into, reporter())));
    }

    std::string pack(Names names, TransferEndpoint from, TransferEndpoint archive, ArchiveFormat format,
                     std::optional<ArchiveTools> with = {})
    {
        return outcomeOf(loop.start(makeArchives(std::move(with))->pack(names, from, archive, format, reporter())));
    }

    std::string add(Names paths, std::string const &archive, std::string const &inner = {},
                    std::optional<ArchiveTools> with = {})
    {
        return outcomeOf(loop.start(makeArchives(std::move(with))->add(paths, archive, inner, reporter())));
    }

    std::string remove(Names members, std::string const &archive, std::optional<ArchiveTools> with = {})
    {
        return outcomeOf(loop.start(makeArchives(std::move(with))->remove(members, archive, reporter())));
    }

    Transfer::Reporter reporter()
    {
        return [this](TransferProgress const &) { ++reportCount; };
    }

    /// The names in the target folder, without what it held before.
    std::set<std::string> arrived() const { return namesIn(local.path()); }

    std::shared_ptr<ArchiveEngine> archives; ///< the last one
    ArchivePasswords::Shared passwords;      ///< null: nobody is asked
    std::atomic<int> reportCount = 0;
};

} // namespace tw::test
