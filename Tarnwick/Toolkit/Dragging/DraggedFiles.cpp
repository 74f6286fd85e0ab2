#include "Tarnwick/Toolkit/Dragging/DraggedFiles.h"

#include "Tarnwick/Clipboard/FileFormats.h"

#include <array>

namespace tw {

namespace {

/// Not those of the clipboard that say "copied" or "cut": a drag has keys for that.
constexpr std::array types{FileDrag::mimeType, FileFormats::uriList, FileFormats::plainText};

QString textOf(std::string_view type)
{
    return QString::fromLatin1(type.data(), static_cast<qsizetype>(type.size()));
}

} // namespace

DraggedFiles::DraggedFiles(FileDrag files)
    : offer(std::make_shared<DragOffer const>(DragOffer{.files = std::move(files)}))
{
}

std::shared_ptr<DragOffer const> DraggedFiles::offerOf(QMimeData const &data, Qt::DropActions possible)
{
    if (auto const *const own = dynamic_cast<DraggedFiles const *>(&data))
        return own->offer;
    auto read = FileFormats::read([&](std::string_view type) -> std::optional<std::string> {
        auto const name = textOf(type);
        return data.hasFormat(name) ? std::optional(data.data(name).toStdString()) : std::nullopt;
    });
    if (!read)
        return nullptr;
    return std::make_shared<DragOffer const>(DragOffer{
        .files = std::move(read->own), .paths = std::move(read->paths), .canMove = possible.testFlag(Qt::MoveAction)});
}

QStringList DraggedFiles::formats() const
{
    QStringList all;
    for (auto const type : types)
        all += textOf(type);
    return all;
}

bool DraggedFiles::hasFormat(QString const &type) const
{
    return formats().contains(type);
}

QVariant DraggedFiles::retrieveData(QString const &type, QMetaType /*wanted*/) const
{
    auto const isList = type == textOf(FileFormats::uriList);
    if (isList && localPaths) {
        auto const paths = localPaths();
        return paths.empty() ? QVariant() : QByteArray::fromStdString(FileFormats::renderUriList(paths));
    }
    auto const data = FileFormats::render(*offer->files, type.toStdString());
    return data ? QByteArray::fromStdString(*data) : QVariant();
}

} // namespace tw
