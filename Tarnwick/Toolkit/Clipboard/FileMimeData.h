#pragma once

#include "Tarnwick/Clipboard/FileFormats.h"

#include <QMimeData>

namespace tw {

/// Files as Qt puts them on the clipboard, in all of FileFormats. Each format is made when somebody asks for it, byte
/// for byte: QMimeData itself would take the addresses for text.
class FileMimeData final : public QMimeData {
    Q_OBJECT

public:
    explicit FileMimeData(FileDrag dragged) : files(std::move(dragged)) {}

    QStringList formats() const override;

protected:
    QVariant retrieveData(QString const &type, QMetaType preferred) const override;

private:
    FileDrag const files;
};

} // namespace tw
