#pragma once

#include "TWCore/Provider/CommandHost.h"
#include "TWCore/Provider/FileSystemWriter.h"
#include "TWEngine/Runtime/SharedCompletion.h"

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace tw::test {

/// A place with files in memory, which answers at once. For one thread.
class FakePlace : public virtual FileSystemProvider, public FileSystemWriter {
public:
    struct Node {
        std::optional<std::string> content = {}; ///< nothing: a folder
        std::int64_t mtime = 1000;
        std::uint64_t inode = 0;
    };

    explicit FakePlace(std::string name) : place(std::move(name)) { folder("/"); }

    void folder(std::string const &path) { nodes[path] = {.inode = ++inodes}; }

    void file(std::string const &path, std::string content)
    {
        nodes[path] = {.content = std::move(content), .inode = ++inodes};
    }

    bool has(std::string const &path) const { return nodes.contains(path); }

    std::string content(std::string const &path) const { return nodes.at(path).content.value_or("<folder>"); }

    /// All paths below a folder, without what it is.
    std::vector<std::string> below(std::string const &folder) const;

    /// Copies a file, or a folder with all that is in it, into a folder here; folders merge.
    void copyFrom(FakePlace const &source, std::string const &path, std::string const &folder);

    /// Answers all that waits.
    void wakeUp();

    /// Called with each request before it is done: "remove /a /b". It may throw in its place.
    std::function<void(std::string const &request)> before = [](auto const &) {};
    std::map<std::string, std::int64_t> sizes;  ///< of files that are shown as larger than they are
    std::string otherFileSystem;                ///< the folder that one is mounted on
    bool isOneDevice = false;                   ///< both file systems, as with two mounts of one disk
    std::shared_ptr<Completion<Done>> syncing;  ///< a sync waits for it, if there is one
    std::shared_ptr<Completion<Done>> making;   ///< the making of a folder likewise
    std::shared_ptr<Completion<Done>> removing; ///< a removal for good likewise, behind each path
    /// Everything that is asked for likewise, as with a disk that does not answer.
    std::shared_ptr<SharedCompletion<Done>> silence;
    std::vector<std::string> requests; ///< that have begun or failed, the questions too
    bool isReversible = true;
    bool takesCasesForOne = false; ///< everywhere, or on the other file system if there is one

    std::string identifier() const override { return place; }

    std::string displayName() const override { return place; }

    int maxUsefulDepth() const override { return 1; }

    Task<Listings> fetch(std::string path, int depth, FetchPriority priority) override;

    bool deleteIsReversible() const override { return isReversible; }

    Task<void> makeDirectory(std::string path) override;
    Task<void> removeEmptyFolder(std::string path) override;
    Task<void> remove(std::vector<std::string> paths) override;
    Task<void> rename(std::string from, std::string to) override;
    Task<void> moveAll(std::vector<Move> moves, Existing existing) override;
    Task<void> removePermanently(std::vector<std::string> paths, LockedFolders /*locked*/) override;
    Task<FolderFacts> factsAbout(std::string folder, std::vector<std::string> names) override;
    Task<Survey> survey(std::string folder, std::vector<std::string> names, Survey::Detail detail) override;
    Task<void> sync(std::string folder) override;

    std::map<std::string, Node> nodes;

private:
    virtual bool isHost() const { return false; }

    Task<void> request(std::string what);
    void erase(std::string const &path);
    std::uint64_t deviceOf(std::string const &path) const;
    std::int64_t sizeOf(std::string const &path) const;
    bool foldsIn(std::string const &path) const;
    void moveTree(std::string const &from, std::string const &to, Existing existing);
    std::string spelledHere(std::string const &path) const;

    std::string const place;
    std::uint64_t inodes = 0;
};

/// The same on a host.
class FakeHostPlace final : public FakePlace, public CommandHost {
public:
    explicit FakeHostPlace(std::string name) : FakePlace("ssh:" + name), hostName(std::move(name))
    {
        isReversible = false;
    }

    std::string identifier() const override { return FakePlace::identifier(); }

    std::string displayName() const override { return hostName; }

    int maxUsefulDepth() const override { return 1; }

    Task<Listings> fetch(std::string path, int depth, FetchPriority priority) override
    {
        return FakePlace::fetch(std::move(path), depth, priority);
    }

    std::string host() const override { return hostName; }

    Task<ShellDialect> dialect() override { co_return ShellDialect::posix; }

    Task<std::string> defaultDirectory() override { co_return "/home/ann"; }

    Task<ArchiveCapability> archiveCapability() override { co_return ArchiveCapability(); }

    Task<std::vector<std::string>> transportOptions() override { co_return std::vector<std::string>(); }

    Task<bool> logsInByItself() override { co_return true; }

    Task<CommandResult> runCommand(HostCommand /*command*/) override
    {
        ++commands;
        co_return CommandResult();
    }

    int commands = 0; ///< that were run

private:
    bool isHost() const override { return true; }

    std::string const hostName;
};

} // namespace tw::test
