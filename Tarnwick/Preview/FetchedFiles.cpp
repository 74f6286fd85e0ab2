#include "Tarnwick/Preview/FetchedFiles.h"

#include "TWCore/Async/Outcome.h"
#include "TWEngine/Platform/RandomDigits.h"
#include "TWEngine/Platform/Scratch.h"

#include <algorithm>
#include <filesystem>
#include <optional>
#include <vector>

namespace tw {

namespace {

/// Random ones: what a host calls a file is no name for one here.
constexpr std::size_t nameBytes = 16;

} // namespace

struct FetchedFiles::State {
    EngineRuntime &engine;
    MakeFolder const makeFolder;
    std::list<Copy> copies = {}; ///< the newest first
    std::int64_t bytes = 0;

    std::optional<std::string> find(std::string const &key)
    {
        auto const copy = std::ranges::find(copies, key, &Copy::key);
        if (copy == copies.end())
            return std::nullopt;
        copies.splice(copies.begin(), copies, copy);
        return copies.front().local;
    }

    /// Answers which files are superfluous now.
    std::vector<std::string> add(Copy copy)
    {
        std::vector<std::string> superfluous;
        bytes += copy.size;
        copies.push_front(std::move(copy));
        while (copies.size() > 1 && (bytes > mostBytes || copies.size() > mostFiles)) {
            superfluous.push_back(copies.back().local);
            bytes -= copies.back().size;
            copies.pop_back();
        }
        return superfluous;
    }

    void forget(std::string const &key)
    {
        auto const copy = std::ranges::find(copies, key, &Copy::key);
        if (copy == copies.end())
            return;
        bytes -= copy->size;
        copies.erase(copy);
    }

    /// On a thread that may wait for a disk.
    template <class Function>
    Task<std::invoke_result_t<Function>> aside(Function work)
    {
        return engine.workers().run(WorkPriority::interactive, std::move(work));
    }
};

namespace {

void removeAll(std::vector<std::string> const &paths)
{
    std::error_code ignored;
    for (auto const &path : paths)
        std::filesystem::remove(path, ignored);
}

} // namespace

FetchedFiles::FetchedFiles(EngineRuntime &runtime, MakeFolder folder)
    : state(std::make_shared<State>(runtime, std::move(folder)))
{
}

FetchedFiles::~FetchedFiles() = default;

Task<std::string> FetchedFiles::copyOf(std::shared_ptr<FileSystemReader> reader, std::string path, std::int64_t size,
                                       std::string key, std::string label)
{
    return fetch(state, std::move(reader), std::move(path), size, std::move(key), std::move(label));
}

Task<std::string> FetchedFiles::fetch(std::shared_ptr<State> state, std::shared_ptr<FileSystemReader> reader,
                                      std::string path, std::int64_t size, std::string key, std::string label)
{
    if (auto const known = state->find(key)) {
        auto const isThere = co_await state->aside([local = *known] {
            std::error_code unknown;
            return std::filesystem::exists(local, unknown);
        });
        if (isThere)
            co_return *known;
        state->forget(key);
    }
    auto const local = co_await state->aside([makeFolder = state->makeFolder] {
        auto const file = makeFolder() + "/" + randomDigits(nameBytes);
        Scratch::makeFile(file);
        return file;
    });
    auto const fetched = co_await outcomeOf(reader->download(std::move(path), local));
    if (fetched.failure) {
        co_await state->aside([local] { removeAll({local}); }).withStop({});
        std::rethrow_exception(fetched.failure);
    }
    co_await state->aside([local, label] { Scratch::markAsFetched(local, label); });
    auto const superfluous = state->add({std::move(key), local, size});
    if (!superfluous.empty())
        co_await state->aside([superfluous] { removeAll(superfluous); });
    co_return local;
}

} // namespace tw
