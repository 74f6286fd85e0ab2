#pragma once

#include <QAbstractButton>
#include <QBasicTimer>

namespace tw {

/// A flat button that lights up slowly under the pointer. It leaves the keyboard where it is.
class FunctionKeyButton final : public QAbstractButton {
    Q_OBJECT

public:
    FunctionKeyButton(QString const &text, QWidget *parent);

    /// How much it is lit, from 0 to 1, one sixtieth of a second later.
    static double washAfterTick(double wash, double target);

    QSize sizeHint() const override;

    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void enterEvent(QEnterEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void timerEvent(QTimerEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    double target() const { return isHovering ? 1.0 : 0.0; }

    void hover(bool isOver);

    bool isHovering = false;
    double wash = 0;
    QBasicTimer timer;
};

} // namespace tw
