#include "tests/ui/FakeThumbnailer.h"

#include <QCryptographicHash>
#include <QDBusMessage>
#include <QDir>
#include <QFileInfo>
#include <QImage>
#include <QUrl>

namespace tw::test {

namespace {

auto const thumbnailerService = QStringLiteral("org.freedesktop.thumbnails.Thumbnailer1");
auto const thumbnailerObject = QStringLiteral("/org/freedesktop/thumbnails/Thumbnailer1");

} // namespace

FakeThumbnailer::FakeThumbnailer(QDBusConnection connection, QString folder)
    : bus(std::move(connection)), thumbnails(std::move(folder))
{
    bus.registerObject(thumbnailerObject, this, QDBusConnection::ExportAllSlots);
    bus.registerService(thumbnailerService);
}

uint FakeThumbnailer::Queue(QStringList const &uris, QStringList const &types, QString const &flavor,
                            QString const & /*scheduler*/, uint /*insteadOf*/)
{
    asked << uris.value(0) + QStringLiteral(" ") + types.value(0) + QStringLiteral(" ") + flavor;
    auto const handle = static_cast<uint>(asked.size());
    if (answers == Answers::picture) {
        makePicture(uris.value(0));
        bus.send(QDBusMessage::createSignal(thumbnailerObject, thumbnailerService, QStringLiteral("Ready"))
                 << handle << uris);
    } else if (answers == Answers::failure) {
        bus.send(QDBusMessage::createSignal(thumbnailerObject, thumbnailerService, QStringLiteral("Error"))
                 << handle << uris << 0 << QStringLiteral("unsupported"));
    }
    return handle;
}

void FakeThumbnailer::Dequeue(uint handle)
{
    asked << QStringLiteral("dequeue %1").arg(handle);
}

void FakeThumbnailer::makePicture(QString const &uri) const
{
    constexpr int side = 32;
    QImage picture(side, side, QImage::Format_RGB32);
    picture.fill(Qt::red);
    auto const changed = QFileInfo(QUrl(uri).toLocalFile()).lastModified().toSecsSinceEpoch();
    picture.setText(QStringLiteral("Thumb::URI"), uri);
    picture.setText(QStringLiteral("Thumb::MTime"), QString::number(changed));
    auto const name = QCryptographicHash::hash(uri.toUtf8(), QCryptographicHash::Md5).toHex();
    QDir(thumbnails).mkpath(QStringLiteral("large"));
    picture.save(thumbnails + QStringLiteral("/large/") + QString::fromLatin1(name) + QStringLiteral(".png"));
}

} // namespace tw::test
