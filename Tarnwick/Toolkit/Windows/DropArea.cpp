#include "Tarnwick/Toolkit/Windows/DropArea.h"

#include "Tarnwick/Dragging/EdgeScroll.h"
#include "Tarnwick/Toolkit/Appearance/Wording.h"
#include "Tarnwick/Toolkit/Diagnostics/StartLog.h"
#include "Tarnwick/Toolkit/Dragging/DraggedFiles.h"
#include "Tarnwick/Toolkit/Table/PaneTableView.h"
#include "Tarnwick/Toolkit/Widgets/PathField.h"
#include "Tarnwick/Toolkit/Widgets/TabBarView.h"
#include "Tarnwick/Toolkit/Widgets/TabStrip.h"
#include "Tarnwick/Toolkit/Windows/PaneView.h"

#include <QCursor>
#include <QDropEvent>
#include <QHeaderView>
#include <QMenu>
#include <QScrollBar>

namespace tw {

namespace {

DragKeys keysOf(Qt::KeyboardModifiers held)
{
    return {.shift = held.testFlag(Qt::ShiftModifier),
            .control = held.testFlag(Qt::ControlModifier),
            .alt = held.testFlag(Qt::AltModifier)};
}

/// What the pointer shows. A drop that asks has a pointer of its own in place of the one for links.
Qt::DropAction shownFor(DropDecision::Action action)
{
    switch (action) {
    case DropDecision::Action::copy:
        return Qt::CopyAction;
    case DropDecision::Action::move:
        return Qt::MoveAction;
    case DropDecision::Action::ask:
        return Qt::LinkAction;
    case DropDecision::Action::refuse:
        break;
    }
    return Qt::IgnoreAction;
}

void answer(QDropEvent &event, DropDecision const &decision)
{
    auto const action = shownFor(decision.action);
    event.setDropAction(event.possibleActions().testFlag(action) ? action : Qt::CopyAction);
    event.setAccepted(!decision.isRefused());
}

} // namespace

DropArea::DropArea(DropHover &hover, PaneView &pane, TabStrip &tabs, QWidget &side)
    : QObject(&side), drag(hover), view(pane), strip(tabs), area(side)
{
    area.setAcceptDrops(true);
    area.installEventFilter(this);
    drag.attach(*this);
}

DropArea::~DropArea()
{
    drag.detach();
}

bool DropArea::eventFilter(QObject *watched, QEvent *event)
{
    switch (event->type()) {
    case QEvent::DragEnter:
        begin(static_cast<QDropEvent &>(*event));
        return true;
    case QEvent::DragMove:
        move(static_cast<QDropEvent &>(*event));
        return true;
    case QEvent::DragLeave:
        end();
        return true;
    case QEvent::Drop:
        drop(static_cast<QDropEvent &>(*event));
        return true;
    default:
        return QObject::eventFilter(watched, event);
    }
}

void DropArea::begin(QDropEvent &event)
{
    offer = event.mimeData() ? DraggedFiles::offerOf(*event.mimeData(), event.possibleActions()) : nullptr;
    if (!offer)
        return event.ignore();
    // Also where a drop is refused: the next place may be another one.
    event.setDropAction(Qt::CopyAction);
    event.accept();
}

void DropArea::move(QDropEvent &event)
{
    if (!offer)
        return event.ignore();
    place = event.position().toPoint();
    held = keysOf(event.modifiers());
    answer(event, drag.over(offer, spotAt(place), held));
}

void DropArea::drop(QDropEvent &event)
{
    if (!offer)
        return event.ignore();
    auto const decision = drag.drop(offer, spotAt(event.position().toPoint()), keysOf(event.modifiers()));
    // A move is made here. A source that hears of one may delete its files before they have been copied.
    event.setDropAction(Qt::CopyAction);
    event.setAccepted(!decision.isRefused());
    end();
}

void DropArea::end()
{
    offer.reset();
    drag.leave();
}

void DropArea::rowsChanged()
{
    if (offer)
        drag.over(offer, spotAt(place), held, DropHover::Cause::rows);
}

DropSpot DropArea::spotAt(QPoint at) const
{
    using Kind = DropSpot::Kind;
    if (auto const inTabs = strip.mapFrom(&area, at); strip.rect().contains(inTabs)) {
        auto const tab = strip.tabAt(inTabs);
        return tab < 0 ? DropSpot() : DropSpot{.kind = Kind::tab, .index = tab};
    }
    if (!view.rect().contains(view.mapFrom(&area, at)))
        return {}; // beside the tabs
    auto const &path = view.pathField();
    if (auto const part = path.parts().componentsAt(path.mapFrom(&area, at)))
        return {.kind = Kind::pathPart, .index = *part};
    return spotInRows(at);
}

DropSpot DropArea::spotInRows(QPoint at) const
{
    auto const &table = view.table();
    auto const inRows = table.viewport()->mapFrom(&area, at);
    if (!table.viewport()->rect().contains(inRows))
        return {.kind = DropSpot::Kind::pane};
    auto const row = table.rowAt(inRows.y());
    auto const speed =
        EdgeScroll::step(inRows.y(), table.viewport()->height(), table.verticalHeader()->defaultSectionSize());
    return {.kind = row < 0 ? DropSpot::Kind::pane : DropSpot::Kind::row, .index = std::max(row, 0), .scroll = speed};
}

void DropArea::showDropTarget(Target const &target)
{
    using Mark = Target::Mark;
    using Shown = PaneTableView::DropTarget;
    view.table().showDropTarget(target.mark == Mark::row    ? Shown::row
                                : target.mark == Mark::pane ? Shown::allRows
                                                            : Shown::none,
                                target.row);
    view.showDropWords(target.words);
    if (StartLog::isOn() && !target.words.isEmpty())
        StartLog::note(QStringLiteral("drag shows ") + Wording::shown(target.words));
}

void DropArea::scrollRows(int pixels)
{
    auto *const bar = view.table().verticalScrollBar();
    bar->setValue(bar->value() + pixels);
    rowsChanged();
}

void DropArea::askHow(std::function<void(TransferKind kind)> onChosen)
{
    auto *const menu = new QMenu(&area);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->addAction(Wording::shown("Copy Here"), this, [onChosen] { onChosen(TransferKind::copy); });
    menu->addAction(Wording::shown("Move Here"), this, [onChosen] { onChosen(TransferKind::move); });
    menu->addSeparator();
    menu->addAction(Wording::shown("Cancel"));
    menu->popup(QCursor::pos());
}

} // namespace tw
