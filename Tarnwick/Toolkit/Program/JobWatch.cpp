#include "Tarnwick/Toolkit/Program/JobWatch.h"

#include "Tarnwick/Toolkit/Appearance/Wording.h"
#include "Tarnwick/Transfers/JobNotice.h"

#include <QDBusMessage>
#include <QGuiApplication>
#include <QPointer>
#include <QVariantMap>

namespace tw {

JobWatch::JobWatch(std::shared_ptr<JobList> list, std::function<QDBusConnection()> busOfSession)
    : isLookedAt([] { return QGuiApplication::applicationState() == Qt::ApplicationActive; }),
      works(std::move(list)),
      sessionBus(std::move(busOfSession))
{
    works->observe([self = QPointer(this)] {
        if (self)
            self->sync();
    });
    works->onEnd = [self = QPointer(this)](JobList::End const &end) {
        if (self)
            self->announce(end);
    };
}

void JobWatch::setSystemBus(QDBusConnection const &bus)
{
    inhibitor = std::make_unique<SleepInhibitor>(bus);
    sync();
}

void JobWatch::sync()
{
    if (!inhibitor)
        return;
    if (works->underWay().empty())
        inhibitor->release();
    else
        inhibitor->hold(Wording::shown("Files are being copied, moved or deleted"));
}

void JobWatch::announce(JobList::End const &end) const
{
    auto const notice = JobNotice::about(end, isLookedAt() ? Attention::given : Attention::elsewhere);
    auto const bus = notice ? sessionBus() : QDBusConnection(QString());
    if (!bus.isConnected())
        return;
    // See the Desktop Notifications Specification of freedesktop.org; the body is markup there.
    auto message = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.Notifications"), QStringLiteral("/org/freedesktop/Notifications"),
        QStringLiteral("org.freedesktop.Notifications"), QStringLiteral("Notify"));
    QVariantMap const hints{{QStringLiteral("desktop-entry"), QStringLiteral("com.velmora.Tarnwick")},
                            {QStringLiteral("category"), QStringLiteral("transfer")}};
    constexpr uint replacesNone = 0;
    constexpr int usualTime = -1;
    message << QStringLiteral("Tarnwick") << replacesNone << QStringLiteral("com.velmora.Tarnwick")
            << QString::fromStdString(notice->summary) << QString::fromStdString(notice->body).toHtmlEscaped()
            << QStringList() << hints << usualTime;
    bus.send(message);
}

} // namespace tw
