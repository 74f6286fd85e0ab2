#pragma once

#include "Tarnwick/Instance/OpenRequest.h"

#include <QDBusConnection>
#include <QObject>
#include <QStringList>

#include <functional>

namespace tw {

/// org.freedesktop.FileManager1 of the session bus, by which "Show in folder" of other programs comes here.
///
/// The name is taken only while the user has chosen this program for folders, and given to another file manager that
/// asks for it. Nothing here waits for the bus.
///
/// Threads: main context only.
class FileManagerService final : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.FileManager1")

public:
    FileManagerService(QDBusConnection const &bus, std::function<void(OpenRequest const &)> open);
    ~FileManagerService() override;

    /// Whether this program is what opens folders.
    void setChosen(bool isChosen);

public Q_SLOTS:
    Q_SCRIPTABLE void ShowFolders(QStringList const &addresses, QString const &startupId);
    Q_SCRIPTABLE void ShowItems(QStringList const &addresses, QString const &startupId);

    /// There is no view of properties; the file is shown.
    Q_SCRIPTABLE void ShowItemProperties(QStringList const &addresses, QString const &startupId);

private:
    void show(QStringList const &addresses, QString const &startupId, OpenRequest::Show what) const;

    QDBusConnection bus;
    std::function<void(OpenRequest const &)> const onRequest;
    bool hasName = false; ///< it was asked for
};

} // namespace tw
