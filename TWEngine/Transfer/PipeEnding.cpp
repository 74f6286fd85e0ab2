#include "TWEngine/Transfer/PipeEnding.h"

namespace tw {

namespace {

std::string wordsOf(PipeEnding::Program const &program)
{
    return program.words.empty() ? program.status.text() : program.words;
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
        return Failure{writing, hasWritten ? "it ended before the archive" : wordsOf(consumer)};
    if (!producer.status.isSuccess())
        return Failure{reading, wordsOf(producer)};
    if (!hasWritten)
        return Failure{writing, wordsOf(consumer)};
    if (!isWhole)
        return Failure{reading, "the archive ended too early"};
    return std::nullopt;
}

} // namespace tw
