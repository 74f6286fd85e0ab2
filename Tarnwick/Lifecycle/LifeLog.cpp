#include "Tarnwick/Lifecycle/LifeLog.h"

#include "TWCore/Model/DisplayText.h"
#include "TWEngine/Platform/PrivateFile.h"

#include <algorithm>
#include <ctime>

#include <unistd.h>

namespace tw {

namespace {

/// A line a minute, and so some five days of running; the later half of that still tells what anybody asks for.
constexpr std::size_t maxBytes = 262'144;

constexpr std::chrono::seconds heartbeatInterval{60};

std::string stamp(Timestamp now)
{
    auto const seconds = std::chrono::system_clock::to_time_t(now);
    std::tm local{};
    ::localtime_r(&seconds, &local);
    char text[32];
    return {text, std::strftime(text, sizeof text, "%m-%d %H:%M:%S", &local)};
}

std::string_view textOf(SessionEvent event)
{
    switch (event) {
    case SessionEvent::sleep:
        return "sleep";
    case SessionEvent::wake:
        return "wake";
    case SessionEvent::powerOff:
        return "power off";
    case SessionEvent::handedOver:
        return "session handed over";
    case SessionEvent::back:
        return "session back";
    }
    return {};
}

} // namespace

std::optional<std::string> trimmedLog(std::string_view text)
{
    if (text.size() <= maxBytes || repaired(text) != text)
        return std::nullopt;
    auto const pieces = std::ranges::count(text, '\n') + 1;
    for (auto dropped = pieces - pieces / 2; dropped > 0; --dropped)
        text.remove_prefix(std::min(text.find('\n'), text.size() - 1) + 1);
    return std::string(text);
}

/// Shared with the heartbeat.
struct LifeLog::Journal {
    std::shared_ptr<Clock> const clock;
    std::string const file;

    void note(std::string_view text) const
    {
        auto line = stamp(clock->now()) + "  pid " + std::to_string(::getpid()) + "  ";
        line.append(text).append("\n");
        PrivateFile::append(file, line);
    }
};

LifeLog::LifeLog(Collaborators with)
    : mainContext(std::move(with.mainContext)),
      journal(std::make_shared<Journal>(std::move(with.clock), std::move(with.file)))
{
    PrivateFile::makeFolderOf(journal->file);
}

LifeLog::~LifeLog()
{
    if (heartbeat)
        heartbeat->cancel();
}

void LifeLog::begin(std::optional<std::string> const &version)
{
    trim();
    note("launch " + version.value_or("?"));
    heartbeat = SharedTask<void>::start(mainContext, keepNotingAlive(journal));
}

Task<void> LifeLog::keepNotingAlive(std::shared_ptr<Journal> journal)
{
    for (;;) {
        co_await journal->clock->sleep(heartbeatInterval);
        journal->note("alive");
    }
}

void LifeLog::trim()
{
    // A log of a process that was left running for a year is not read as a whole to be cut.
    constexpr std::size_t readable = 64 * maxBytes;
    auto rest = PrivateFile::read(journal->file, readable);
    if (rest)
        rest = trimmedLog(*rest);
    else if (auto const end = PrivateFile::readEnd(journal->file, maxBytes))
        rest = end->substr(end->find('\n') + 1);
    if (rest)
        PrivateFile::replace(journal->file, *rest);
}

void LifeLog::note(std::string_view text)
{
    journal->note(text);
}

void LifeLog::note(SessionEvent event)
{
    note(textOf(event));
}

} // namespace tw
