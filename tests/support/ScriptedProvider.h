#pragma once

#include "TWCore/Provider/FileSystemProvider.h"
#include "TWEngine/Runtime/Completion.h"

#include <functional>
#include <stdexcept>
#include <vector>

namespace tw::test {

/// A provider whose fetches wait for the answer of the test, unless it is set to answer at once.
///
/// Threads: one.
class ScriptedProvider : public virtual FileSystemProvider {
public:
    struct Request {
        std::string path;
        int depth;
        FetchPriority priority;
        std::shared_ptr<Completion<Listings>> answer;
    };

    std::string identifier() const override { return "scripted"; }

    std::string displayName() const override { return "Scripted"; }

    int maxUsefulDepth() const override { return usefulDepth; }

    std::optional<std::string> persistentCacheIdentity() const override { return cacheIdentity; }

    Task<void> connect() override
    {
        ++connects;
        return connectFails ? refuse() : nothingToDo();
    }

    Task<void> disconnect() override
    {
        ++disconnects;
        return nothingToDo();
    }

    Task<Listings> fetch(std::string path, int depth, FetchPriority priority) override
    {
        return note(this, Request{std::move(path), depth, priority, std::make_shared<Completion<Listings>>()});
    }

    Task<Listings> fetchWhole(std::string path, PartTaker onPart) override
    {
        partTakers.push_back(std::move(onPart));
        return fetch(std::move(path), 1, FetchPriority::interactive);
    }

    /// If set: the answer to every fetch.
    std::function<Listings(std::string const &path)> answersAtOnce;

    /// The fetches in flight, the oldest first.
    std::vector<Request> waiting;
    /// Of all whole listings that were asked for.
    std::vector<PartTaker> partTakers;
    /// The number of fetches so far.
    int fetches = 0;
    int connects = 0;
    int disconnects = 0;
    int usefulDepth = 4;
    bool connectFails = false;
    std::optional<std::string> cacheIdentity;

    Request takeOldest()
    {
        if (waiting.empty())
            throw std::logic_error("the provider was not asked for anything");
        auto request = waiting.front();
        waiting.erase(waiting.begin());
        return request;
    }

private:
    static Task<void> refuse()
    {
        throw std::runtime_error("no way there");
        co_return;
    }

    static Task<Listings> note(ScriptedProvider *self, Request request)
    {
        ++self->fetches;
        if (self->answersAtOnce)
            co_return self->answersAtOnce(request.path);
        self->waiting.push_back(request);
        auto listings = co_await Completion<Listings>::wait(request.answer);
        co_return listings;
    }
};

} // namespace tw::test
