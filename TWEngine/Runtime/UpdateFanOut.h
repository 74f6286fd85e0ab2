#pragma once

#include "TWEngine/Runtime/UpdateStream.h"

#include <cstdint>
#include <memory>
#include <unordered_map>

namespace tw {

/// Sends every value to all who have subscribed, from their subscription until either side ends.
///
/// Threads: used on the executor that it was made with; the streams may live anywhere.
template <class T>
class UpdateFanOut {
public:
    explicit UpdateFanOut(std::shared_ptr<Executor> ground) : executor(std::move(ground)) {}

    UpdateStream<T> subscribe()
    {
        auto const number = ++lastNumber;
        auto const forget = [weak = std::weak_ptr(sinks), number, ground = executor] {
            ground->post([weak, number] {
                if (auto const all = weak.lock())
                    all->erase(number);
            });
        };
        auto ends = UpdateStream<T>::make(forget);
        sinks->emplace(number, ends.sender);
        return std::move(ends.stream);
    }

    void send(T const &value) const
    {
        for (auto const &[number, sink] : *sinks)
            sink.send(value);
    }

    /// Ends all streams.
    void finish()
    {
        for (auto const &[number, sink] : std::exchange(*sinks, {}))
            sink.finish();
    }

private:
    using Sinks = std::unordered_map<std::uint64_t, typename UpdateStream<T>::Sender>;

    std::shared_ptr<Executor> const executor;
    std::shared_ptr<Sinks> const sinks = std::make_shared<Sinks>();
    std::uint64_t lastNumber = 0;
};

} // namespace tw
