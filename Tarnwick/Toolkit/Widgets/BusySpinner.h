#pragma once

#include <QBasicTimer>
#include <QWidget>

namespace tw {

/// A small turning arc. It costs nothing, and shows nothing, while it does not spin; its place stays reserved.
class BusySpinner final : public QWidget {
public:
    explicit BusySpinner(QWidget *parent = nullptr);

    void start();
    void stop();

    bool isSpinning() const { return timer.isActive(); }

    QSize sizeHint() const override;

protected:
    void timerEvent(QTimerEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    QBasicTimer timer;
    int angle = 0; ///< degrees
};

} // namespace tw
