#include "TWEngine/Transfer/TarPipe.h"

#include "TWCore/Model/FileOperationError.h"
#include "TWEngine/Transfer/PumpRest.h"
#include "TWEngine/Transfer/TarError.h"
#include "TWEngine/Transfer/TarReader.h"
#include "TWEngine/Transfer/TransferChild.h"
#include "TWEngine/Transfer/TransferLog.h"

#include <array>
#include <span>

namespace tw::TarPipe {

namespace {

/// What is read at once. More than the cache of a core holds is slower.
constexpr std::size_t pieceBytes = std::size_t{256} * 1024;

/// What is moved at once of a member's data: all that a pipe holds.
constexpr std::size_t movedBytes = std::size_t{1024} * 1024;

/// For what has arrived already to be unpacked after a cancel.
constexpr std::chrono::milliseconds patienceWithConsumer{60};

/// What ssh itself says with its exit status: the host's program has another one.
constexpr int lostConnection = 255;

struct Running {
    Running(TransferWork::Shared of, Stream const &stream)
        : work(std::move(of)),
          names(stream.names),
          guard(stream.guard),
          log(stream.names),
          reader([this](TarMember const &member) { begin(member); })
    {
    }

    Running(Running const &) = delete;
    Running &operator=(Running const &) = delete;

    void begin(TarMember const &member)
    {
        if (guard)
            guard->check(member);
        log.begin(member.name, reader.position(), reader.files());
        item = member.name;
    }

    TransferWork::Shared const work;
    std::vector<std::string> const names;
    std::optional<MemberGuard> guard;
    TransferLog log;
    TarReader reader;
    std::string item;
    std::string buffer = {}; ///< the memory of the last piece, for the next one
    TransferChild::Shared producer;
    TransferChild::Shared consumer;
    PipeEnding ending;
};

using Run = std::shared_ptr<Running>;

/// The rest of the producer's output means nothing to a consumer that has the whole archive.
Task<void> drop(Run run)
{
    std::string buffer;
    do {
        buffer = co_await run->producer->process().read(ChildOutput::standard, std::move(buffer));
    } while (!buffer.empty());
}

/// What was asked for of the stream, and what has passed of it: nothing at its end.
struct Piece {
    std::size_t most = 0;
    std::size_t passed = 0;
};

/// Throws TarError before anything is passed on that must not be.
Task<Piece> passRead(Run run)
{
    auto buffer = std::exchange(run->buffer, {});
    buffer.reserve(pieceBytes);
    buffer = co_await run->producer->process().read(ChildOutput::standard, std::move(buffer));
    Piece const piece{.most = pieceBytes, .passed = buffer.size()};
    if (piece.passed == 0)
        co_return piece;
    run->reader.take(buffer);
    try {
        run->buffer = co_await run->consumer->process().write(std::move(buffer));
    } catch (PipeError const &) {
        run->ending.couldNotWrite = true;
    }
    co_return piece;
}

/// Of a producer of this machine, nothing has to be checked before it is passed on. So its bytes go from pipe to pipe,
/// and only the headers among them are read.
Task<Piece> passCopied(Run run)
{
    auto const &producer = run->producer->process();
    Piece piece{.most = pieceBytes};
    bool isConsumerGone = false;
    try {
        piece.passed = co_await producer.copyOutput(run->consumer->process(), piece.most);
    } catch (PipeError const &) {
        isConsumerGone = true;
    }
    if (isConsumerGone) { // which is no failure at the end of the archive
        piece = co_await passRead(run);
        co_return piece;
    }
    std::array<char, TarHeader::blockBytes> block;
    for (auto left = piece.passed; left > 0;) {
        if (auto const data = std::min(left, static_cast<std::size_t>(run->reader.dataLeft()))) {
            producer.dropOutput(data);
            run->reader.skip(static_cast<std::int64_t>(data));
            left -= data;
            continue;
        }
        auto const header = std::span(block).first(std::min(left, block.size()));
        producer.takeOutput(header);
        run->reader.take({header.data(), header.size()});
        left -= header.size();
    }
    co_return piece;
}

/// The data of a large member goes from pipe to pipe, and not through this process.
Task<Piece> passUnread(Run run)
{
    Piece piece{.most = std::min(movedBytes, static_cast<std::size_t>(run->reader.dataLeft()))};
    try {
        piece.passed = co_await run->producer->process().moveOutput(run->consumer->process(), piece.most);
    } catch (PipeError const &) {
        run->ending.couldNotWrite = true;
    }
    run->reader.skip(static_cast<std::int64_t>(piece.passed));
    co_return piece;
}

Task<void> pump(Run run)
{
    auto const clock = run->work->engine.clock();
    PumpRest rest;
    for (;;) {
        bool const isLarge = run->reader.dataLeft() >= static_cast<std::int64_t>(pieceBytes);
        auto passing = isLarge ? passUnread(run) : run->guard ? passRead(run) : passCopied(run);
        auto const piece = co_await std::move(passing);
        if (piece.passed == 0 || run->ending.couldNotWrite)
            break;
        run->log.passed(run->reader.position(), run->reader.files());
        run->work->reportStep(run->reader.position(), run->reader.files(),
                              run->item.empty() ? run->work->label : run->item);
        auto const time = rest.after(piece.passed, piece.most);
        if (time > PumpRest::Time(0))
            co_await clock->sleep(time);
    }
    run->ending.isWhole = run->reader.isAtEnd();
    run->consumer->process().closeInput();
    if (run->ending.couldNotWrite && run->ending.isWhole)
        co_await drop(run);
}

/// Fills in how the two programs ended, after the pump has.
Task<void> awaitPrograms(Run run)
{
    bool const isInVain = !run->ending.refusal.empty() || (run->ending.couldNotWrite && !run->ending.isWhole);
    if (!run->ending.refusal.empty())
        run->consumer->process().terminate();
    if (isInVain)
        run->producer->process().terminate();
    run->ending.producer.status = co_await TransferChild::end(run->producer);
    run->ending.consumer.status = co_await TransferChild::end(run->consumer);
    run->ending.producer.words = run->producer->words();
    run->ending.consumer.words = run->consumer->words();
}

Task<void> carry(Run run)
{
    auto pumped = co_await outcomeOf(pump(run));
    try {
        pumped.take();
    } catch (TarError const &refusal) {
        run->ending.refusal = refusal.what();
    }
    co_await awaitPrograms(run);
}

/// The consumer gets the chance to unpack what it has.
Task<void> callOff(Run run)
{
    run->producer->process().terminate();
    run->consumer->process().closeInput();
    run->ending.consumer.status = co_await TransferChild::endSoon(run->consumer, patienceWithConsumer);
    run->ending.producer.status = co_await TransferChild::endSoon(run->producer, std::chrono::milliseconds(0));
    run->ending.consumer.words = run->consumer->words();
    run->ending.producer.words = run->producer->words();
}

/// A consumer that has ended by itself has unpacked all that it was given, or says what it could not unpack. One that
/// fails without a word was no tar, or never became one.
bool hasUnpackedAll(PipeEnding const &ending)
{
    auto const &[status, words, isHere] = ending.consumer;
    bool const endedByItself = status.cause == ExitStatus::Cause::exited && status.number != lostConnection;
    return endedByItself && (status.isSuccess() || !words.empty()) && !ending.couldNotWrite && ending.refusal.empty();
}

void addTo(TransferSummary &summary, TransferSummary part)
{
    summary.files += part.files;
    std::ranges::move(part.complete, std::back_inserter(summary.complete));
    std::ranges::move(part.partial, std::back_inserter(summary.partial));
    std::ranges::move(part.untouched, std::back_inserter(summary.untouched));
}

/// What a program of ours or of ssh says about its own end is no complaint about a name.
Blamed blamedBy(PipeEnding::Program const &program, std::vector<std::string> const &names)
{
    auto const &status = program.status;
    if (status.isSuccess())
        return {};
    bool const endedByItself = status.cause == ExitStatus::Cause::exited && status.number != lostConnection;
    return Blamed::in(program.words, names,
                      endedByItself ? Blamed::Unreadable::meansEverything : Blamed::Unreadable::meansNothing);
}

void conclude(Run const &run)
{
    if (run->reader.isAtEnd())
        run->log.end(run->reader.position(), run->reader.files());
    run->log.blame(blamedBy(run->ending.producer, run->names));
    run->log.blame(blamedBy(run->ending.consumer, run->names));
    auto const arrival =
        hasUnpackedAll(run->ending) ? TransferLog::Arrival::everything : TransferLog::Arrival::allButInFlight;
    addTo(run->work->summary, run->log.summary(arrival));
    run->work->summary.words =
        run->ending.consumer.words.empty() ? run->ending.producer.words : run->ending.consumer.words;
    run->work->bytesBefore += run->reader.position();
    run->work->filesBefore += run->reader.files();
}

} // namespace

Task<void> run(TransferWork::Shared work, Stream stream)
{
    auto const run = std::make_shared<Running>(work, stream);
    run->ending.producer.isHere = !work->from.host();
    run->ending.consumer.isHere = !work->to.host();
    run->producer = co_await TransferChild::start(work->engine, std::move(stream.producer));
    run->consumer = co_await TransferChild::start(work->engine, std::move(stream.consumer));

    auto const carried = co_await outcomeOf(carry(run));
    if (carried.failure) {
        co_await callOff(run).withStop({});
        conclude(run);
        std::rethrow_exception(carried.failure);
    }
    auto const failure = run->ending.failure();
    conclude(run);
    if (failure)
        throw FileOperationError::Failed(failure->operation, work->label, failure->detail);
}

} // namespace tw::TarPipe
