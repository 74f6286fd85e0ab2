// How a session lists folders: with the question beside the listing, whole and paced, and left by its caller.

#include "TWCore/Async/Cancelled.h"
#include "TWCore/Async/Outcome.h"
#include "TWEngine/Runtime/SharedCompletion.h"
#include "TWEngine/Shell/Pace.h"
#include "TWEngine/Shell/PacedListing.h"
#include "TWEngine/Shell/PathQuestion.h"
#include "TWEngine/Shell/RemoteShell.h"
#include "TWEngine/Shell/ShellClient.h"

namespace tw {

/// The paced listing that a session sends.
struct RemoteShell::Paced {
    std::uint64_t id = 0;
    Pace pace;
    WholeListing listing;
    std::shared_ptr<SharedCompletion<void>> const ended = std::make_shared<SharedCompletion<void>>();
};

Task<ListingResponse> RemoteShell::list(std::string path, int depth, std::optional<std::size_t> room)
{
    return onStrand(strand, listing(shared_from_this(), std::move(path), depth,
                                    std::min(room.value_or(options.maxResponseBytes), options.maxResponseBytes)));
}

Task<ListingResponse> RemoteShell::listing(std::shared_ptr<RemoteShell> self, std::string path, int depth,
                                           std::size_t room)
{
    if (self->paced)
        co_await turn(self);
    if (!self->connected)
        throw RemoteShellError::NotConnected();
    auto const listID = self->nextRequestID++;
    auto const listed = self->expect(listID);
    auto const isLess = room < self->options.maxResponseBytes;
    auto text =
        ShellRequest::list(self->dialect, path, depth, isLess ? std::optional(room) : std::nullopt).numbered(listID);
    // In one write: the question costs no round trip.
    auto const questionID = self->nextRequestID++;
    Answer question;
    if (self->dialect == ShellDialect::posix) {
        question = self->expect(questionID);
        text += ShellRequest::ask(path).numbered(questionID);
        // Nothing else asks it, so a session learns it with its first listing.
        if (self->instructed.lock() != self->session)
            text.insert(0, PathQuestion::script(self->nonce));
        self->instructed = self->session;
    }
    auto const started = self->clock->steadyNow();
    self->session->write(text);
    auto response = co_await answerUnlessLeft(self, listID, listed);
    response.elapsed = self->clock->steadyNow() - started;
    response.truncated = response.truncated || response.bytes.size() >= room;
    if (question) {
        auto const said = co_await answerUnlessLeft(self, questionID, question);
        response.refusal = PathQuestion::refusal(said.status, said.bytes);
    }
    co_return response;
}

Task<ListingResponse> RemoteShell::answerUnlessLeft(std::shared_ptr<RemoteShell> self, std::uint64_t id, Answer answer)
{
    auto const context = co_await currentContext();
    auto const limit = self->options.requestTimeout;
    auto const started = self->clock->steadyNow();
    auto outcome = co_await outcomeOf(Completion<ListingResponse>::wait(answer));
    if (outcome.failure && context.stop.stop_requested()) {
        // The answer is dropped when it comes, and until then it holds up what is asked next.
        if (self->pending.contains(id))
            self->left.insert(id);
        throw Cancelled();
    }
    if (self->clock->steadyNow() - started >= limit)
        throw RemoteShellError::TimedOut(limit);
    co_return outcome.take();
}

Task<ListingResponse> RemoteShell::listWhole(std::string path, WholeListing how)
{
    return onStrand(strand, wholeListing(shared_from_this(), std::move(path), std::move(how)));
}

Task<ListingResponse> RemoteShell::wholeListing(std::shared_ptr<RemoteShell> self, std::string path, WholeListing how)
{
    if (self->paced)
        co_await turn(self);
    if (!self->connected)
        throw RemoteShellError::NotConnected();
    auto const context = co_await currentContext();
    auto const session = self->session;
    auto const id = self->nextRequestID++;
    auto const answer = self->expect(id);
    auto const started = self->clock->steadyNow();
    auto const running =
        std::make_shared<Paced>(Paced{.id = id, .pace = Pace(how.line, started), .listing = std::move(how)});
    self->paced = running;
    session->write(PacedListing::request(self->nonce, id, path) + PacedListing::grant(running->pace.first()));
    auto outcome = co_await outcomeOf(Completion<ListingResponse>::wait(answer));
    // What others write from here on stands behind the last grant.
    session->write(PacedListing::grant(0));
    self->paced.reset();
    running->ended->settle({});
    if (outcome.failure && context.stop.stop_requested()) {
        if (self->pending.contains(id))
            self->left.insert(id);
        throw Cancelled();
    }
    auto response = outcome.take();
    response.elapsed = self->clock->steadyNow() - started;
    response.truncated = response.bytes.size() >= PacedListing::mostBytes;
    response.bytes.resize(std::min(response.bytes.size(), PacedListing::mostBytes));
    co_return response;
}

/// Waits until requests can be written.
Task<void> RemoteShell::turn(std::shared_ptr<RemoteShell> self)
{
    while (self->paced) {
        auto const ended = self->paced->ended;
        co_await SharedCompletion<void>::wait(ended);
    }
}

/// False before its turn, when what arrives belongs to requests before it, and behind its end.
bool RemoteShell::isTurnOfPaced() const
{
    return paced && !pending.empty() && pending.begin()->first == paced->id;
}

/// A frame that does not end the paced listing shows that what has come before it was no part of the listing.
void RemoteShell::noteOther(ShellReader::Frame const &frame)
{
    if (isTurnOfPaced() && frame.id != paced->id && paced->listing.onBytes)
        paced->listing.onBytes({});
}

/// Bytes have arrived that end no response.
void RemoteShell::advancePaced()
{
    if (!isTurnOfPaced())
        return;
    auto const bytes = session->waiting();
    if (auto const more = paced->pace.arrived(bytes.size(), clock->steadyNow()); more > 0)
        session->write(PacedListing::grant(more));
    if (paced->listing.onBytes)
        paced->listing.onBytes(bytes.substr(0, PacedListing::mostBytes));
}

} // namespace tw
