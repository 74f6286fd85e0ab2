#pragma once

#include <QSplitter>

#include <functional>

namespace tw {

/// Two panes side by side with a thin line between them, which can be taken hold of a little beside it as well.
class PaneSplitter final : public QSplitter {
public:
    explicit PaneSplitter(QWidget *parent = nullptr);

    /// Neither side gets narrower than this.
    static constexpr int leastSide = 260;

    void addPane(QWidget *pane);

    void equalize();

    /// How much of the width the left side has, in thousandths.
    int leftShare() const;
    void setLeftShare(int permille);

    /// The line was clicked twice.
    std::function<void()> onDividerDoubleClicked;

protected:
    QSplitterHandle *createHandle() override;
};

} // namespace tw
