#pragma once

#include "TWCore/Provider/FolderEvents.h"
#include "TWEngine/Runtime/UpdateStream.h"
#include "tests/support/ScriptedProvider.h"

#include <optional>

namespace tw::test {

/// A place of this machine whose events the test sends. For one thread.
class FakeFolderEvents final : public ScriptedProvider, public FolderEvents {
public:
    using Event = FolderWatch::Event;

    Task<std::shared_ptr<FolderWatch>> watchFolder(std::string path) override
    {
        watched.push_back(std::move(path));
        if (!hasEvents)
            co_return nullptr;
        auto ends = UpdateStream<Event>::make([this] { ++ended; });
        newest = ends.sender;
        co_return std::make_shared<Watch>(std::move(ends.stream));
    }

    void send(Event event) { newest.value().send(event); }

    bool hasEvents = true;
    std::vector<std::string> watched; ///< so far
    int ended = 0;                    ///< of those watches

private:
    class Watch final : public FolderWatch {
    public:
        explicit Watch(UpdateStream<Event> source) : stream(std::move(source)) {}

        Task<Event> next() override { return nextOf(&stream); }

    private:
        static Task<Event> nextOf(UpdateStream<Event> *stream)
        {
            auto const event = co_await stream->next();
            co_return event.value();
        }

        UpdateStream<Event> stream;
    };

    std::optional<UpdateStream<Event>::Sender> newest;
};

} // namespace tw::test
