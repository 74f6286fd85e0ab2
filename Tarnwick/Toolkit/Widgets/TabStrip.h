#pragma once

#include <QTabBar>

namespace tw {

/// The tabs of a TabBarView, as the style draws them, in the height of that bar.
class TabStrip final : public QTabBar {
public:
    explicit TabStrip(QWidget *parent = nullptr);

    /// As wide as all tabs in full would be.
    int wantedWidth() const;

    /// Whether the tabs have buttons that close them.
    void setClosable(bool closable);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    QSize tabSizeHint(int index) const override;
    QSize minimumTabSizeHint(int index) const override;
    void mouseReleaseEvent(QMouseEvent *event) override;

private:
    /// A quiet one of our own: that of some styles is red, and draws the eye away from the rows.
    QWidget *makeCloseButton();
};

} // namespace tw
