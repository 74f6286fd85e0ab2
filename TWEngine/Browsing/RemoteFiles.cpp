#include "TWEngine/Browsing/RemoteFiles.h"

#include "TWCore/Async/Outcome.h"
#include "TWCore/Model/FileOperationError.h"
#include "TWEngine/Browsing/LocalProviderError.h"
#include "TWEngine/Browsing/LocalRemoval.h"
#include "TWEngine/Runtime/EngineRuntime.h"
#include "TWEngine/Runtime/WholeFile.h"

#include <algorithm>
#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>

namespace tw {

namespace {

constexpr auto purpose = "open";

constexpr auto lastLink = FileLanes::LastLink::keep;
constexpr auto priority = WorkPriority::interactive;

std::string nameIn(std::string const &path)
{
    return path.substr(path.rfind('/') + 1);
}

std::string newCopyIn(Scratch::Place const &place, std::string const &name)
{
    auto path = Scratch::newFolder(purpose, place) + '/' + name;
    Scratch::makeFile(path);
    return path;
}

void write(std::string const &path, std::string const &bytes)
{
    FileDescriptor file(::open(path.c_str(), O_WRONLY | O_NOFOLLOW | O_CLOEXEC));
    auto error = file ? WholeFile::write(file.get(), bytes) : errno;
    if (error == 0)
        error = WholeFile::close(std::move(file));
    if (error != 0)
        throw FileOperationError::Failed("create", path, systemText(error));
}

} // namespace

RemoteFiles::RemoteFiles(EngineRuntime &engine, Scratch::Place where, Limits limits)
    : runtime(engine), place(std::move(where)), bounds(limits)
{
}

std::optional<RemoteFiles::Stamp> RemoteFiles::stampOf(std::string const &path)
{
    struct stat status;
    if (::lstat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode))
        return std::nullopt;
    constexpr std::int64_t nanoseconds = 1'000'000'000;
    return Stamp{status.st_size, status.st_mtim.tv_sec * nanoseconds + status.st_mtim.tv_nsec};
}

Task<std::optional<std::string>> RemoteFiles::known(Source source)
{
    return knownHere(shared_from_this(), std::move(source));
}

Task<std::optional<std::string>> RemoteFiles::knownHere(Self self, Source source)
{
    auto const isOfSource = [key = Key(source.connection, source.path)](Copy const &copy) { return copy.key == key; };
    auto const found = std::ranges::find_if(self->copies, isOfSource);
    // Of a link's target nothing is known, so it is fetched each time.
    if (found == self->copies.end() || !source.size || found->sizeThere != source.size ||
        found->mtimeThere != source.mtime)
        co_return std::nullopt;
    auto const copy = *found;
    auto const stamp = co_await self->runtime.files().run(
        copy.path, lastLink, priority, [path = copy.path](std::string const & /*place*/) { return stampOf(path); });
    if (stamp != copy.stamp)
        co_return std::nullopt;
    auto const still = std::ranges::find(self->copies, copy.path, &Copy::path);
    if (still == self->copies.end())
        co_return std::nullopt;
    self->copies.splice(self->copies.begin(), self->copies, still);
    co_return copy.path;
}

Task<std::string> RemoteFiles::localCopy(Source source)
{
    return shareFetch(shared_from_this(), std::move(source));
}

Task<std::string> RemoteFiles::shareFetch(Self self, Source source)
{
    auto ready = co_await self->known(source);
    if (ready)
        co_return *std::move(ready);
    auto const context = co_await currentContext();
    Key const key(source.connection, source.path);
    auto running = self->fetches.find(key);
    if (running == self->fetches.end())
        running =
            self->fetches.emplace(key, Fetch{SharedTask<Copy>::start(context.executor, fetch(self, source))}).first;
    ++running->second.waiters;
    auto const task = running->second.task;
    auto outcome = co_await outcomeOf(task.wait());
    self->leave(key, task);
    co_return outcome.take().path;
}

/// The last who waits for a fetch ends it.
void RemoteFiles::leave(Key const &key, SharedTask<Copy> const &task)
{
    auto const running = fetches.find(key);
    if (running == fetches.end() || running->second.task != task || --running->second.waiters > 0)
        return;
    task.cancel();
    fetches.erase(running);
}

Task<RemoteFiles::Copy> RemoteFiles::fetch(Self self, Source source)
{
    auto &files = self->runtime.files();
    auto const path = co_await files.run(
        self->place.base, lastLink, priority,
        [place = self->place, name = nameIn(source.path)](std::string const &) { return newCopyIn(place, name); });
    auto const folder = path.substr(0, path.rfind('/'));
    auto const outcome = co_await outcomeOf(fill(self, source, path));
    if (outcome.failure) {
        self->remove(folder);
        std::rethrow_exception(outcome.failure);
    }
    Copy copy{.key = {source.connection, source.path},
              .folder = folder,
              .path = path,
              .sizeThere = source.size,
              .mtimeThere = source.mtime,
              .stamp = *outcome.value};
    self->keep(copy);
    co_return copy;
}

Task<RemoteFiles::Stamp> RemoteFiles::fill(Self self, Source source, std::string target)
{
    auto const reader = std::dynamic_pointer_cast<FileSystemReader>(source.provider);
    if (!reader)
        throw NoReader(source.connection);
    auto const isRead = co_await readSmall(self, reader, source, target);
    if (!isRead)
        co_await reader->download(source.path, target);
    auto const stamp = co_await self->runtime.files().run(target, lastLink, priority,
                                                          [target, label = source.connection](std::string const &) {
                                                              Scratch::markAsFetched(target, label);
                                                              return stampOf(target).value_or(Stamp());
                                                          });
    co_return stamp;
}

/// False if the file is not small, or is no longer what its listing says.
Task<bool> RemoteFiles::readSmall(Self self, std::shared_ptr<FileSystemReader> reader, Source source,
                                  std::string target)
{
    if (!source.size || *source.size < 0 || *source.size > mostOfSmall)
        co_return false;
    // One byte more shows that the file has grown.
    auto const expected = static_cast<std::size_t>(*source.size);
    auto bytes = co_await reader->readChunk(source.path, 0, expected + 1);
    if (bytes.size() != expected)
        co_return false;
    co_await self->runtime.files().run(
        target, lastLink, priority,
        [target, bytes = std::move(bytes)](std::string const & /*place*/) { write(target, bytes); });
    co_return true;
}

/// In the place of an older copy of the same file, which stays on the disk for the program that has it open as long as
/// the bounds allow.
void RemoteFiles::keep(Copy copy)
{
    copies.push_front(std::move(copy));
    std::int64_t bytes = 0;
    std::size_t count = 0;
    for (auto each = copies.begin(); each != copies.end();) {
        bytes += each->stamp.size;
        ++count;
        auto const isTooMuch = count > 1 && (count > bounds.copies || bytes > bounds.bytes);
        if (isTooMuch)
            remove(each->folder);
        each = isTooMuch ? copies.erase(each) : std::next(each);
    }
}

/// Behind the caller's back: nobody waits for it.
void RemoteFiles::remove(std::string const &folder) const
{
    runtime.workers().executor(WorkPriority::background)->post([folder] {
        try {
            removeForGood(folder, {});
        } catch (std::exception const &) {
            // The end of the process tries again.
        }
    });
}

} // namespace tw
