#include "Tarnwick/Toolkit/Clipboard/FileMimeData.h"

namespace tw {

QStringList FileMimeData::formats() const
{
    QStringList all;
    for (auto const type : FileFormats::all())
        all += QString::fromUtf8(type.data(), static_cast<qsizetype>(type.size()));
    return all;
}

QVariant FileMimeData::retrieveData(QString const &type, QMetaType /*preferred*/) const
{
    auto const bytes = FileFormats::render(files, type.toStdString());
    return bytes ? QVariant(QByteArray::fromStdString(*bytes)) : QVariant();
}

} // namespace tw
