#include "TWEngine/Shell/ShellClient.h"

#include "TWCore/Async/Outcome.h"
#include "TWCore/Model/DisplayText.h"
#include "TWCore/Model/Trimmed.h"
#include "TWEngine/Runtime/PipeError.h"
#include "TWEngine/Runtime/SharedTask.h"
#include "TWEngine/Runtime/TimeOut.h"
#include "TWEngine/Shell/PacedListing.h"

namespace tw {

namespace {

/// As much is kept of what a host prints instead of a greeting.
constexpr std::size_t maxUnframedBytes = 65536;

/// Of that, a person is shown as much.
constexpr std::size_t maxPrintedBytes = 2048;

/// The longest answer that is waited for, with some room for its marker. Listings are cut by the script and reads by
/// their length, so only a broken or hostile host sends more.
constexpr std::size_t maxAnswerBytes = PacedListing::mostBytes + (1U << 20U);

/// How long a client whose output has ended may take to end as well and to say why on its standard error. A shared
/// connection can hold that open for as long as it lives.
constexpr std::chrono::milliseconds lastWordsTime{500};

} // namespace

ShellClient::ShellClient(Strand ground, std::shared_ptr<ChildProcess> process, ShellReader responses,
                         std::unique_ptr<ClientWords> reporting)
    : strand(std::move(ground)), child(std::move(process)), reader(std::move(responses)), words(std::move(reporting))
{
}

void ShellClient::write(std::string_view text)
{
    toWrite += text;
    if (!std::exchange(isWriting, true))
        spawn({strand.executor(), {}}, writeQueued(shared_from_this()));
}

Task<void> ShellClient::writeQueued(Self self)
{
    try {
        while (!self->toWrite.empty())
            co_await self->child->write(std::exchange(self->toWrite, {}));
    } catch (PipeError const &) {
        self->toWrite.clear();
    }
    self->isWriting = false;
}

Task<std::string> ShellClient::listen(std::shared_ptr<Clock> clock, Taker take)
{
    return listenHere(shared_from_this(), std::move(clock), std::move(take));
}

Task<std::string> ShellClient::listenHere(Self self, std::shared_ptr<Clock> clock, Taker take)
{
    auto const context = co_await currentContext();
    auto const ofErrors = SharedTask<void>::start(context.executor, listenToErrors(self));
    std::stop_callback const stopErrors(context.stop, [ofErrors] { ofErrors.cancel(); });
    auto isFlooded = false;
    std::string buffer;
    do {
        try {
            buffer = co_await self->child->read(ChildOutput::standard, std::move(buffer));
        } catch (PipeError const &) {
            buffer.clear();
        }
        if (!take(self->reader.ingest(buffer))) {
            ofErrors.cancel();
            co_return "";
        }
        isFlooded = self->reader.waiting().size() > maxAnswerBytes;
    } while (!buffer.empty() && !isFlooded);

    if (isFlooded)
        self->child->kill();
    co_await outcomeOf(withTimeOut(clock, lastWordsTime, self->child->wait()));
    co_await outcomeOf(withTimeOut(clock, lastWordsTime, ofErrors.wait()));
    ofErrors.cancel();
    co_return isFlooded ? "the host sends without an end" : self->report().words;
}

Task<void> ShellClient::listenToErrors(Self self)
{
    std::string buffer;
    for (;;) {
        buffer = co_await self->child->read(ChildOutput::error, std::move(buffer));
        if (buffer.empty())
            co_return;
        self->words->hear(buffer);
    }
}

std::string ShellClient::unframedOutput() const
{
    return std::string(reader.waiting().substr(0, maxUnframedBytes));
}

ClientReport ShellClient::report() const
{
    auto report = words->report();
    report.words = std::string(trimmed(repaired(report.words)));
    report.printed = reader.waiting().substr(0, maxPrintedBytes);
    return report;
}

void ShellClient::keepHelpers()
{
    child->leaveDescendants();
}

void ShellClient::end()
{
    stop.request_stop();
    // A writer that the client does not listen to would keep it alive.
    child->closeInput();
    child->terminate();
}

Task<void> ShellClient::endSurely(std::shared_ptr<Clock> clock)
{
    return endSurelyHere(shared_from_this(), std::move(clock));
}

Task<void> ShellClient::endSurelyHere(Self self, std::shared_ptr<Clock> clock)
{
    auto const waited = co_await outcomeOf(withTimeOut(clock, lastWordsTime, self->child->wait()));
    if (waited.failure)
        self->child->kill();
}

} // namespace tw
