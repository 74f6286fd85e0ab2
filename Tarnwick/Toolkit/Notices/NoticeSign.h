#pragma once

#include "Tarnwick/Panes/PaneNotice.h"

#include <QWidget>

namespace tw {

/// The icon of a pane's strip: a warning, or a clock.
class NoticeSign final : public QWidget {
    Q_OBJECT

public:
    explicit NoticeSign(QWidget *parent);

    void setKind(PaneNotice::Kind wanted);

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void paintWarning(QPainter &painter, qreal edge) const;

    PaneNotice::Kind kind = PaneNotice::Kind::failure;
};

} // namespace tw
