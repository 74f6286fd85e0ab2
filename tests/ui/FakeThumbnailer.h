#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QStringList>

namespace tw::test {

/// A stand-in for the desktop's thumbnailer, whose pictures are a red square.
class FakeThumbnailer final : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.thumbnails.Thumbnailer1")

public:
    enum class Answers { picture, failure, none };

    /// `folder` is where thumbnails lie.
    FakeThumbnailer(QDBusConnection connection, QString folder);

    void set(Answers to) { answers = to; }

    /// What was asked for, as "address type", and what was taken back, as "dequeue number".
    QStringList asked;

public Q_SLOTS:
    uint Queue(QStringList const &uris, QStringList const &types, QString const &flavor, QString const &scheduler,
               uint insteadOf);
    void Dequeue(uint handle);

private:
    void makePicture(QString const &uri) const;

    QDBusConnection bus;
    QString const thumbnails;
    Answers answers = Answers::picture;
};

} // namespace tw::test
