#include "TWEngine/Transfer/PipeEnding.h"

namespace tw {

namespace {

/// ssh(1): its status if an error occurred, of which it says nothing where it shares a connection. tar has no such one.
constexpr ExitStatus lost{ExitStatus::Cause::exited, 255};

std::string wordsOf(PipeEnding::Program const &program)
{
    if (!program.words.empty())
        return program.words;
    auto const isLost = !program.isHere && program.status == lost;
    return program.status.text() + (isLost ? ": the connection was lost" : "");
}

/// GNU tar says no more than this of the first block that a full disk takes in part.
std::string wordsOfConsumer(PipeEnding::Program const &program)
{
    auto words = wordsOf(program);
    if (words.find(": Wrote only ") != words.npos && words.find("No space left") == words.npos)
        words += "\nThe disk may be full.";
    return words;
}

} // namespace

std::optional<PipeEnding::Failure> PipeEnding::failure() const
{
    std::string const reading = producer.isHere ? "read from this Mac" : "read from remote";
    std::string const writing = consumer.isHere ? "write to this Mac" : "write to remote";
    if (!refusal.empty())
        return Failure{reading, refusal};
    bool const hasWritten = consumer.status.isSuccess();
    if (couldNotWrite && !(hasWritten && isWhole))
        return Failure{writing, hasWritten ? "it ended before the archive" : wordsOfConsumer(consumer)};
    if (!producer.status.isSuccess())
        return Failure{reading, wordsOf(producer)};
    if (!hasWritten)
        return Failure{writing, wordsOfConsumer(consumer)};
    if (!isWhole)
        return Failure{reading, "the archive ended too early"};
    return std::nullopt;
}

} // namespace tw
