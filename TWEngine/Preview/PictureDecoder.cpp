#include "TWEngine/Preview/PictureDecoder.h"

#include <csignal>

namespace tw {

namespace {

using Result = PictureDecoder::Result;

Task<Result> read(std::shared_ptr<DecoderProcess> decoder, PictureAnswer answer, PictureDecoder::ShowDraft showDraft)
{
    std::string buffer;
    for (;;) {
        buffer = co_await decoder->process().read(ChildOutput::standard, std::move(buffer));
        if (buffer.empty())
            break;
        if (!answer.take(buffer)) {
            decoder->process().kill();
            co_return std::unexpected(PictureFailure::crashed);
        }
        if (auto draft = answer.takeDraft(); draft && showDraft)
            showDraft(*std::move(draft));
    }
    auto const status = co_await decoder->process().wait();
    auto const wasKilled = status.cause == ExitStatus::Cause::killed;
    if (wasKilled && (status.number == SIGALRM || status.number == SIGXCPU))
        co_return std::unexpected(PictureFailure::tooSlow);
    auto result = std::move(answer).finish();
    co_return result;
}

} // namespace

Task<Result> PictureDecoder::decode(FileDescriptor file, PictureRequest request, ShowDraft showDraft)
{
    return perform(shared_from_this(), std::move(file), std::move(request), std::move(showDraft));
}

Task<Result> PictureDecoder::perform(std::shared_ptr<PictureDecoder> self, FileDescriptor file, PictureRequest request,
                                     ShowDraft showDraft)
{
    auto decoder = std::exchange(self->spare, nullptr);
    if (!decoder || !decoder->ask(request, file)) {
        decoder = co_await DecoderProcess::start(self->engine, self->path);
        if (!decoder || !decoder->ask(request, file))
            co_return std::unexpected(PictureFailure::crashed);
    }
    file = FileDescriptor();
    co_await renewSpare(self);
    auto result = co_await read(std::move(decoder), PictureAnswer(request.room, request.draft), std::move(showDraft));
    co_return result;
}

/// Takes a millisecond or two, in which the picture is decoded already. Behind a stop there is none: `endSpare` may
/// have been called.
Task<void> PictureDecoder::renewSpare(std::shared_ptr<PictureDecoder> self)
{
    if (self->spares == Spare::none || self->spare)
        co_return;
    auto started = co_await DecoderProcess::start(self->engine, self->path);
    auto const context = co_await currentContext();
    if (!context.stop.stop_requested())
        self->spare = std::move(started);
}

} // namespace tw
