#pragma once

#include "TWCore/Provider/FileSystemWriter.h"
#include "tests/support/ScriptedProvider.h"

namespace tw::test {

/// A provider of which every write too waits until the test ends it. For one thread.
class ScriptedWriter final : public ScriptedProvider, public FileSystemWriter {
public:
    struct Write {
        std::string what; ///< the operation and its paths
        std::shared_ptr<Completion<Done>> end;

        void succeed() const { end->succeed({}); }

        void fail(std::exception_ptr why) const { end->fail(std::move(why)); }
    };

    bool deleteIsReversible() const override { return isReversible; }

    Task<void> makeDirectory(std::string path) override { return note(this, "makeDirectory " + path); }

    Task<void> removeEmptyFolder(std::string path) override { return note(this, "removeEmptyFolder " + path); }

    Task<void> remove(std::vector<std::string> paths) override
    {
        std::string what = "remove";
        for (auto const &path : paths)
            what += " " + path;
        return note(this, what);
    }

    Task<void> rename(std::string from, std::string to) override { return note(this, "rename " + from + " " + to); }

    Task<void> moveAll(std::vector<Move> moves, Existing existing) override
    {
        std::string what = existing == Existing::stays ? "moveAll" : "replaceAll";
        for (auto const &move : moves)
            what += " " + move.from + " " + move.to;
        return note(this, what);
    }

    Task<void> removePermanently(std::vector<std::string> paths, LockedFolders /*locked*/) override
    {
        std::string what = "removePermanently";
        for (auto const &path : paths)
            what += " " + path;
        return note(this, what);
    }

    Task<FolderFacts> factsAbout(std::string folder, std::vector<std::string> names) override
    {
        FolderFacts facts{.realPath = std::move(folder)};
        for (auto &name : names)
            facts.taken.push_back({.name = std::move(name)});
        co_return facts;
    }

    Task<Survey> survey(std::string /*folder*/, std::vector<std::string> /*names*/, Survey::Detail /*detail*/) override
    {
        co_return Survey();
    }

    Task<void> sync(std::string folder) override { return note(this, "sync " + folder); }

    bool isReversible = true;
    bool followsStops = true; ///< false: a write that is stopped waits all the same

    /// Those asked for so far, ended or not.
    std::vector<Write> writes;

private:
    static Task<void> note(ScriptedWriter *self, std::string what)
    {
        auto const end = std::make_shared<Completion<Done>>();
        self->writes.push_back({std::move(what), end});
        auto waiting = Completion<Done>::wait(end);
        if (self->followsStops)
            co_await std::move(waiting);
        else
            co_await std::move(waiting).withStop({});
    }
};

} // namespace tw::test
