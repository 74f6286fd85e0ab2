#include "Tarnwick/Toolkit/Program/QtDefaults.h"

#include <QFile>
#include <QStandardPaths>

namespace tw {

namespace {

QString usersFile()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
           QStringLiteral("/Tarnwick/Tarnwick.ini");
}

} // namespace

QtDefaults::QtDefaults() : QtDefaults(usersFile()) {}

QtDefaults::QtDefaults(QString const &file) : settings(file, QSettings::IniFormat)
{
    static_cast<void>(settings.allKeys()); // has every line read
    if (settings.status() != QSettings::FormatError)
        return;
    auto const copy = file + QStringLiteral(".broken");
    QFile::remove(copy);
    if (QFile::copy(file, copy))
        broken = copy.toStdString();
}

std::optional<std::string> QtDefaults::text(std::string const &key) const
{
    auto const value = settings.value(QString::fromStdString(key));
    if (!value.isValid())
        return std::nullopt;
    if (value.userType() == QMetaType::QByteArray)
        return value.toByteArray().toStdString();
    // A text with a comma that somebody wrote without quotes comes back in pieces.
    if (value.userType() == QMetaType::QStringList)
        return value.toStringList().join(QStringLiteral(", ")).toStdString();
    return value.toString().toStdString();
}

void QtDefaults::store(std::string const &key, std::string const &value)
{
    auto const asText = QString::fromStdString(value);
    auto const isUtf8 = asText.toStdString() == value;
    settings.setValue(QString::fromStdString(key),
                      isUtf8 ? QVariant(asText) : QVariant(QByteArray::fromStdString(value)));
}

} // namespace tw
