#pragma once

#include <QObject>
#include <QPointer>

#include <functional>
#include <memory>

class QDrag;
class QMouseEvent;

namespace tw {

/// Keeps a drop on another program back until what was dropped is there.
///
/// The other program learns of a drop when the toolkit sees the mouse button released, and then expects its data at
/// once: it gives up after some seconds, and the window would stand still as long as it waits. So the release is kept
/// from the toolkit. For the other program the drag rests where it was dropped, whatever the pointer does meanwhile,
/// and the windows of this program are usable as always. Works where the toolkit itself looks for the release, which is
/// X11.
///
/// Lifetime: as long as the drag runs.
class HeldDrop final : public QObject {
public:
    explicit HeldDrop(QDrag &drag);
    ~HeldDrop() override;

    static bool isPossible();

    /// Files were dropped on another program, which accepts them. Now either `letThrough` or `cancel` is to be called.
    std::function<void()> onDropped;

    /// The other program gets the drop.
    void letThrough();

    /// The other program gets nothing, and the drag is over.
    void cancel();

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    enum class State { dragging, held, over };

    bool holds(QObject &window, QEvent const &event);
    bool passOn(QObject &receiver, QEvent &event);

    State state = State::dragging;
    bool isOverOwnWindow = false;
    Qt::DropAction action = Qt::IgnoreAction;
    QPointer<QObject> releasedOver;
    std::unique_ptr<QEvent> release;
};

} // namespace tw
