#pragma once

#include <QBasicTimer>
#include <QWidget>

namespace tw {

/// One line of text, shortened to the room there is. The whole text is its tool tip while it is shortened.
class ElidedLabel final : public QWidget {
    Q_OBJECT

public:
    explicit ElidedLabel(QWidget *parent = nullptr);

    void setText(QString const &text);

    /// That of the pane that is not the active one steps back.
    void showActive(bool active);

    /// Inverts its colours for a moment, as the visible part of a beep.
    void flash();

    bool isFlashing() const { return flashing.isActive(); }

    QString const &text() const noexcept { return whole; }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    bool event(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void timerEvent(QTimerEvent *event) override;

private:
    QString shortened() const;

    QString whole;
    bool isActive = true;
    QBasicTimer flashing;
};

} // namespace tw
