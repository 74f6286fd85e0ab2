#include "Tarnwick/Toolkit/Widgets/PaneSplitter.h"

#include <QPainter>
#include <QResizeEvent>

#include <algorithm>

namespace tw {

namespace {

constexpr int dividerWidth = 1;

constexpr int wholePermille = 1000;

/// Invisible, on each side of the line.
constexpr int grabMargin = 4;

/// The line, lying over the edges of the panes with its margins. A splitter asks the handle for them.
class Divider final : public QSplitterHandle {
public:
    explicit Divider(PaneSplitter *owner) : QSplitterHandle(Qt::Horizontal, owner), splitter(*owner)
    {
        setContentsMargins(grabMargin, 0, grabMargin, 0);
        setAttribute(Qt::WA_MouseNoMask);
    }

protected:
    void resizeEvent(QResizeEvent *event) override
    {
        // Not the base class's, which knows a margin of its own for thin lines only.
        QWidget::resizeEvent(event);
        setMask(QRegion(contentsRect()));
    }

    void paintEvent(QPaintEvent * /*event*/) override
    {
        QPainter painter(this);
        painter.fillRect(contentsRect(), palette().color(QPalette::Dark));
    }

    void mouseDoubleClickEvent(QMouseEvent *event) override
    {
        if (event->button() == Qt::LeftButton && splitter.onDividerDoubleClicked)
            splitter.onDividerDoubleClicked();
    }

private:
    PaneSplitter &splitter;
};

} // namespace

PaneSplitter::PaneSplitter(QWidget *parent) : QSplitter(Qt::Horizontal, parent)
{
    setHandleWidth(dividerWidth);
    setChildrenCollapsible(false);
}

void PaneSplitter::addPane(QWidget *pane)
{
    pane->setMinimumWidth(leastSide);
    // Without stretch factors, a splitter that changes its size keeps the proportion of its sides.
    addWidget(pane);
}

void PaneSplitter::equalize()
{
    setLeftShare(wholePermille / 2);
}

int PaneSplitter::leftShare() const
{
    auto const sides = sizes();
    auto const whole = sides.value(0) + sides.value(1);
    return whole == 0 ? wholePermille / 2 : (sides.value(0) * wholePermille + whole / 2) / whole;
}

void PaneSplitter::setLeftShare(int permille)
{
    auto const whole = width() - dividerWidth;
    auto const left = (whole * std::clamp(permille, 0, wholePermille) + wholePermille / 2) / wholePermille;
    setSizes({left, whole - left});
}

QSplitterHandle *PaneSplitter::createHandle()
{
    return new Divider(this);
}

} // namespace tw
