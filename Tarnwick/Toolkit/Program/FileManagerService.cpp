#include "Tarnwick/Toolkit/Program/FileManagerService.h"

#include <QDBusMessage>
#include <QDBusPendingCall>

namespace tw {

namespace {

QString serviceName()
{
    return QStringLiteral("org.freedesktop.FileManager1");
}

QString objectPath()
{
    return QStringLiteral("/org/freedesktop/FileManager1");
}

QDBusMessage toTheBus(QString const &method)
{
    return QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.DBus"),
                                          QStringLiteral("/org/freedesktop/DBus"),
                                          QStringLiteral("org.freedesktop.DBus"), method);
}

} // namespace

FileManagerService::FileManagerService(QDBusConnection const &connection, std::function<void(OpenRequest const &)> open)
    : bus(connection), onRequest(std::move(open))
{
    if (bus.isConnected())
        bus.registerObject(objectPath(), this, QDBusConnection::ExportScriptableSlots);
}

FileManagerService::~FileManagerService()
{
    setChosen(false);
    if (bus.isConnected())
        bus.unregisterObject(objectPath());
}

void FileManagerService::setChosen(bool isChosen)
{
    if (!bus.isConnected() || isChosen == hasName)
        return;
    hasName = isChosen;
    // See "Message Bus Messages" of the D-Bus specification: another may take the name over, ours replaces such a one,
    // and nobody waits in a queue for it.
    constexpr uint allowReplacement = 1;
    constexpr uint replaceExisting = 2;
    constexpr uint doNotQueue = 4;
    auto message = toTheBus(isChosen ? QStringLiteral("RequestName") : QStringLiteral("ReleaseName"));
    message << serviceName();
    if (isChosen)
        message << (allowReplacement | replaceExisting | doNotQueue);
    bus.asyncCall(message);
}

void FileManagerService::ShowFolders(QStringList const &addresses, QString const &startupId)
{
    show(addresses, startupId, OpenRequest::Show::folders);
}

void FileManagerService::ShowItems(QStringList const &addresses, QString const &startupId)
{
    show(addresses, startupId, OpenRequest::Show::items);
}

void FileManagerService::ShowItemProperties(QStringList const &addresses, QString const &startupId)
{
    show(addresses, startupId, OpenRequest::Show::items);
}

void FileManagerService::show(QStringList const &addresses, QString const &startupId, OpenRequest::Show what) const
{
    std::vector<std::string> texts;
    for (auto const &each : addresses)
        texts.push_back(each.toStdString());
    auto request = OpenRequest::showing(texts, what);
    request.activationToken = startupId.toStdString();
    onRequest(request);
}

} // namespace tw
