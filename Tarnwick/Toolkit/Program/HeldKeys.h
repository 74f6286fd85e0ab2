#pragma once

#include <QHash>
#include <QObject>
#include <QPointer>

class QCoreApplication;
class QKeyEvent;

namespace tw {

/// Keeps a key that is held from acting in another window than the one in which it was pressed: Return that closes a
/// window must not press a button in the next.
///
/// Lifetime: as long as windows get keys.
class HeldKeys final : public QObject {
public:
    explicit HeldKeys(QCoreApplication &application);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    bool isRepeat(QKeyEvent const &press) const;

    using Code = quint32;

    static Code codeOf(QKeyEvent const &event);

    QHash<Code, QPointer<QObject>> windows; ///< in which each key was pressed last; no more than a keyboard has

    // The last release.
    Code released = 0;
    quint64 releasedAt = 0; ///< milliseconds of the window system
};

} // namespace tw
