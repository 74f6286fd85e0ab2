#include "Tarnwick/Toolkit/Preview/DesktopThumbnailer.h"

#include "TWCore/Async/Outcome.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QTimer>

namespace tw {

namespace {

auto const service = QStringLiteral("org.freedesktop.thumbnails.Thumbnailer1");
auto const object = QStringLiteral("/org/freedesktop/thumbnails/Thumbnailer1");

QDBusMessage call(QString const &method)
{
    return QDBusMessage::createMethodCall(service, object, service, method);
}

} // namespace

Task<bool> DesktopThumbnailer::make(std::string uri, std::string mimeType)
{
    return ask(shared_from_this(), std::move(uri), std::move(mimeType));
}

Task<bool> DesktopThumbnailer::ask(std::shared_ptr<DesktopThumbnailer> self, std::string uri, std::string mimeType)
{
    if (!self->bus().isConnected())
        co_return false;
    auto const request = std::make_shared<Request>(std::move(uri));
    std::shared_ptr<Completion<bool>> const answer(request, &request->answer);
    self->requests.push_back(request);
    self->listen();
    self->queue(request, mimeType);
    QTimer::singleShot(patience, self.get(), [answer] { answer->succeed(false); });
    auto outcome = co_await outcomeOf(Completion<bool>::wait(answer));
    std::erase(self->requests, request);
    request->isGivenUp = outcome.failure != nullptr;
    self->takeOff(*request);
    co_return outcome.take();
}

/// Of any sender: the service may be started by the first request, and asking the bus for its owner would wait.
void DesktopThumbnailer::listen()
{
    if (std::exchange(isListening, true))
        return;
    auto session = bus();
    session.connect(QString(), object, service, QStringLiteral("Ready"), this, SLOT(pictureReady(uint, QStringList)));
    session.connect(QString(), object, service, QStringLiteral("Error"), this,
                    SLOT(pictureFailed(uint, QStringList, int, QString)));
}

void DesktopThumbnailer::queue(std::shared_ptr<Request> const &request, std::string const &mimeType)
{
    auto question = call(QStringLiteral("Queue"));
    constexpr uint insteadOfNone = 0;
    question << QStringList(QString::fromStdString(request->uri)) << QStringList(QString::fromStdString(mimeType))
             << QStringLiteral("large") << QStringLiteral("default") << insteadOfNone;
    auto *const watcher = new QDBusPendingCallWatcher(bus().asyncCall(question), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, request](QDBusPendingCallWatcher *ended) {
        ended->deleteLater();
        auto const reply = ended->reply();
        if (reply.type() != QDBusMessage::ReplyMessage)
            request->answer.succeed(false);
        request->handle = reply.arguments().value(0).toUInt();
        takeOff(*request);
    });
}

void DesktopThumbnailer::takeOff(Request const &request)
{
    if (request.isGivenUp && request.handle != 0)
        bus().send(call(QStringLiteral("Dequeue")) << request.handle);
}

void DesktopThumbnailer::pictureReady(uint /*handle*/, QStringList const &uris)
{
    settle(uris, true);
}

void DesktopThumbnailer::pictureFailed(uint /*handle*/, QStringList const &uris, int /*code*/,
                                       QString const & /*message*/)
{
    settle(uris, false);
}

/// By its file: the signal may be handled before the answer that has the handle.
void DesktopThumbnailer::settle(QStringList const &uris, bool isReady)
{
    for (auto const &request : requests) {
        if (uris.contains(QString::fromStdString(request->uri)))
            request->answer.succeed(isReady);
    }
}

} // namespace tw
