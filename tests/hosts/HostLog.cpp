#include "tests/hosts/HostLog.h"

#include "TWEngine/Runtime/ChildProcess.h"
#include "TWEngine/Runtime/EngineRuntime.h"

#include <condition_variable>
#include <mutex>

namespace tw::test {

struct HostLog::State {
    std::mutex mutex;
    std::condition_variable changed;
    // Under the mutex.
    std::string text;
    bool hasEnded = true;

    void append(std::string const &piece)
    {
        std::lock_guard const lock(mutex);
        text += piece;
        changed.notify_all();
    }

    void setEnded(bool ended)
    {
        std::lock_guard const lock(mutex);
        hasEnded = ended;
        changed.notify_all();
    }

    static Task<void> read(std::shared_ptr<State> self, std::shared_ptr<ChildProcess> process)
    {
        for (;;) {
            auto const piece = co_await process->read(ChildOutput::error);
            if (piece.empty())
                break;
            self->append(piece);
        }
        self->setEnded(true);
    }
};

HostLog::HostLog() : state(std::make_shared<State>()) {}

void HostLog::collect(EngineRuntime &engine, std::shared_ptr<ChildProcess> process)
{
    state->setEnded(false);
    spawn({engine.makeStrand().executor(), {}}, State::read(state, std::move(process)));
}

std::string HostLog::text() const
{
    std::lock_guard const lock(state->mutex);
    return state->text;
}

std::size_t HostLog::size() const
{
    std::lock_guard const lock(state->mutex);
    return state->text.size();
}

bool HostLog::waitFor(std::string_view words, std::size_t offset) const
{
    std::unique_lock lock(state->mutex);
    auto const isThere = [&] { return state->text.find(words, offset) != std::string::npos; };
    state->changed.wait(lock, [&] { return isThere() || state->hasEnded; });
    return isThere();
}

void HostLog::waitForEnd() const
{
    std::unique_lock lock(state->mutex);
    state->changed.wait(lock, [&] { return state->hasEnded; });
}

} // namespace tw::test
