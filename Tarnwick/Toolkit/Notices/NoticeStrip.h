#pragma once

#include "Tarnwick/Panes/PaneNotice.h"
#include "Tarnwick/Table/KeyPress.h"

#include <QPointer>
#include <QWidget>

#include <functional>
#include <vector>

class QPushButton;

namespace tw {

class NoticeSign;
class WrappedText;

/// The strip between a pane's path and its rows: a sign, a text and buttons for the actions, which stand below the text
/// in a narrow pane.
///
/// The keyboard comes only by `takeKeyboard`. In the strip, Left and Right go from button to button, Return presses the
/// button, and every other key is the pane's.
class NoticeStrip final : public QWidget {
    Q_OBJECT

public:
    explicit NoticeStrip(QWidget *parent = nullptr);

    void showNotice(PaneNotice const &notice);

    /// Whether the buttons on show are those of `notice`, and stay if it is shown.
    bool hasButtonsOf(PaneNotice const &notice) const;

    /// Gives the keyboard to the first action. False without an action.
    bool takeKeyboard();

    /// Whether one of the buttons has the keyboard, or will have it when the window has.
    bool hasKeyboard() const;

    /// The buttons in the order of the actions.
    std::vector<QPushButton *> const &buttons() const noexcept { return actionButtons; }

    WrappedText &text() const { return *words; }

    bool hasHeightForWidth() const override { return true; }

    int heightForWidth(int width) const override;
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

    std::function<void(PaneNotice::Action)> onAction;
    /// A key for the pane. True if the pane used the key.
    std::function<bool(KeyPress const &)> onKey;

    enum class Keyboard { come, gone };

    std::function<void(Keyboard)> onKeyboard; ///< from button to button it goes and comes

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    struct Places;

    Places placesIn(int width) const;
    void arrange();
    void makeButtons(std::vector<PaneNotice::Action> const &wanted);
    bool handleKey(QPushButton &button, QKeyEvent &event);
    void goTo(QPushButton const &from, int step);
    void applyColors();

    PaneNotice shown;
    NoticeSign *const sign;
    WrappedText *const words;
    std::vector<QPushButton *> actionButtons;
};

} // namespace tw
