#include "Tarnwick/Toolkit/Windows/DragOut.h"

#include "TWCore/Model/DisplayText.h"
#include "Tarnwick/Dragging/DragFetch.h"
#include "Tarnwick/Toolkit/Dragging/DragPicture.h"
#include "Tarnwick/Toolkit/Dragging/DraggedFiles.h"
#include "Tarnwick/Toolkit/Dragging/HeldDrop.h"
#include "Tarnwick/Toolkit/Table/PaneTableView.h"
#include "Tarnwick/Toolkit/Windows/PaneView.h"
#include "Tarnwick/Window/MainWindowController.h"

#include <QDrag>
#include <QGuiApplication>
#include <QPointer>

#include <utility>

namespace tw {

namespace {

QPixmap pictureOf(PaneController const &pane, FileDrag const &files, PaneTableView const &table)
{
    auto const row = pane.model().rowForName(files.names.front());
    auto const cell = row ? table.model()->index(*row, 0) : QModelIndex();
    return DragPicture::of(cell.data(Qt::DecorationRole).value<QIcon>(),
                           QString::fromStdString(onOneLine(files.names.front())), files.names.size(), table);
}

/// Other programs get local copies of files of a host, where a drop can wait for them.
std::unique_ptr<HeldDrop> withFetch(std::shared_ptr<DragFetch> const &fetch, QDrag &drag, DraggedFiles &data)
{
    if (!fetch || !HeldDrop::isPossible())
        return nullptr;
    data.offerInstead([fetch] { return fetch->paths(); });
    auto held = std::make_unique<HeldDrop>(drag);
    held->onDropped = [fetch, drop = held.get()] {
        fetch->start(
            [drop](DragFetch::End end) { end == DragFetch::End::arrived ? drop->letThrough() : drop->cancel(); });
    };
    return held;
}

} // namespace

void DragOut::run(MainWindowController &controller, PaneSide side, PaneView &view)
{
    auto const &pane = controller.pane(side);
    auto files = pane->operands();
    if (files.names.empty() || !pane->model().snapshot())
        return;
    FileDrag dragged{.connection = files.connection, .directory = files.path, .names = std::move(files.names)};
    auto const fetch = controller.fetchForDrag(side);
    auto &table = view.table();
    auto *const drag = new QDrag(&table);
    drag->setPixmap(pictureOf(*pane, dragged, table));
    drag->setHotSpot(DragPicture::hotSpot);
    auto *const data = new DraggedFiles(std::move(dragged));
    drag->setMimeData(data);
    // A drop in this program asks where another one makes links.
    QObject::connect(drag, &QDrag::targetChanged, drag, [drag, scale = table.devicePixelRatioF()](QObject *target) {
        drag->setDragCursor(target ? DragPicture::askingCursor(scale) : QPixmap(), Qt::LinkAction);
    });
    auto const held = withFetch(fetch, *drag, *data);
    running = true;
    QPointer<DragOut> const self(this);
    drag->exec(Qt::CopyAction | Qt::MoveAction | Qt::LinkAction, Qt::CopyAction);
    if (fetch)
        fetch->finish();
    if (!self) // the window has been destroyed meanwhile
        return;
    running = false;
    if (afterEnd)
        QMetaObject::invokeMethod(this, std::exchange(afterEnd, nullptr), Qt::QueuedConnection);
}

void DragOut::endBefore(std::function<void()> then)
{
    if (!running)
        return then();
    afterEnd = [then = std::move(then)] {
        QGuiApplication::sync();
        then();
    };
    QDrag::cancel();
}

} // namespace tw
