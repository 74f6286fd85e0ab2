// How a session lists folders.

#include "TWEngine/Shell/PathQuestion.h"
#include "TWEngine/Shell/RemoteShell.h"
#include "TWEngine/Shell/ShellClient.h"

namespace tw {

Task<ListingResponse> RemoteShell::list(std::string path, int depth)
{
    return onStrand(strand, listing(shared_from_this(), std::move(path), depth));
}

Task<ListingResponse> RemoteShell::listing(std::shared_ptr<RemoteShell> self, std::string path, int depth)
{
    if (!self->connected)
        throw RemoteShellError::NotConnected();
    auto const limit = self->options.requestTimeout;
    auto const listID = self->nextRequestID++;
    auto const listed = self->expect(listID);
    auto text = ShellRequest::list(self->dialect, path, depth).numbered(listID);
    Answer question;
    // In one write: the question costs no round trip.
    if (self->dialect == ShellDialect::posix) {
        auto const questionID = self->nextRequestID++;
        question = self->expect(questionID);
        text += ShellRequest::ask(path).numbered(questionID);
        // Nothing else asks it, so a session learns it with its first listing.
        if (self->instructed.lock() != self->session)
            text.insert(0, PathQuestion::script(self->nonce));
        self->instructed = self->session;
    }
    self->session->write(text);
    auto response = co_await answerWithin(self->clock, listed, limit);
    if (question) {
        auto const said = co_await answerWithin(self->clock, question, limit);
        response.refusal = PathQuestion::refusal(said.status, said.bytes);
    }
    co_return response;
}

} // namespace tw
