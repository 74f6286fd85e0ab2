#pragma once

#include "TWEngine/Runtime/Completion.h"
#include "Tarnwick/Preview/Thumbnailer.h"

#include <QDBusConnection>
#include <QObject>

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace tw {

/// The thumbnailer of the session's bus, org.freedesktop.thumbnails.Thumbnailer1. Where there is none, no picture is
/// made.
///
/// Threads: main context only; nothing here waits for the bus.
/// Lifetime: shared; a request keeps it.
class DesktopThumbnailer final : public QObject,
                                 public Thumbnailer,
                                 public std::enable_shared_from_this<DesktopThumbnailer> {
    Q_OBJECT

public:
    /// Nobody looks at a file for longer and waits for its picture. The service has to be started first, perhaps.
    static constexpr std::chrono::seconds patience{15};

    /// `sessionBus` is asked for with the first file.
    explicit DesktopThumbnailer(std::function<QDBusConnection()> sessionBus) : bus(std::move(sessionBus)) {}

    Task<bool> make(std::string uri, std::string mimeType) override;

private Q_SLOTS:
    void pictureReady(uint handle, QStringList const &uris);
    void pictureFailed(uint handle, QStringList const &uris, int code, QString const &message);

private:
    /// A file that the service was asked for.
    struct Request {
        std::string uri;
        Completion<bool> answer = {};
        uint handle = 0; ///< of the service; 0: not known yet
        bool isGivenUp = false;
    };

    static Task<bool> ask(std::shared_ptr<DesktopThumbnailer> self, std::string uri, std::string mimeType);

    void listen();
    void queue(std::shared_ptr<Request> const &request, std::string const &mimeType);
    void takeOff(Request const &request);
    void settle(QStringList const &uris, bool isReady);

    std::function<QDBusConnection()> const bus;
    bool isListening = false;
    std::vector<std::shared_ptr<Request>> requests; ///< under way
};

} // namespace tw
