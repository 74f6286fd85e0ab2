#pragma once

#include "Tarnwick/Dragging/DragOffer.h"

#include <QMimeData>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace tw {

/// Files that are dragged out of a pane, in the formats of other programs. Another program may ask at any time, also
/// while the drag is over it.
class DraggedFiles final : public QMimeData {
public:
    /// What a drag offers to other programs as addresses. Asked each time; nothing: there is none now.
    using LocalPaths = std::function<std::vector<std::string>()>;

    explicit DraggedFiles(FileDrag files);

    /// Other programs get these files of this machine, and no addresses of the host.
    void offerInstead(LocalPaths paths) { localPaths = std::move(paths); }

    /// What is dragged, for a target in this program; of any drag, also of another program. Null: there are no files.
    static std::shared_ptr<DragOffer const> offerOf(QMimeData const &data, Qt::DropActions possible);

    QStringList formats() const override;
    bool hasFormat(QString const &type) const override;

protected:
    QVariant retrieveData(QString const &type, QMetaType wanted) const override;

private:
    std::shared_ptr<DragOffer const> const offer;
    LocalPaths localPaths;
};

} // namespace tw
