#pragma once

#include <QObject>

#include <functional>
#include <span>
#include <vector>

class QPushButton;
class QWidget;

namespace tw {

/// The keyboard in lines of buttons: arrows go from one button to another, Return and Space press, Escape leaves. The
/// button with the keyboard looks like it in every style.
///
/// Lifetime: a child of the widget that the lines are in.
class ButtonLines final : public QObject {
public:
    using Line = std::vector<QPushButton *>;

    /// `lines` answers the lines as they are now. Buttons that are hidden or disabled are passed over.
    ButtonLines(QWidget &owner, std::function<std::vector<Line>()> lines);

    /// The keyboard is to be somewhere else.
    std::function<void()> onLeave;

    /// A button got the keyboard.
    std::function<void(QPushButton &button)> onChosen;

    /// Of a new line.
    void watch(std::span<QPushButton *const> buttons);

    /// Gives the keyboard to the first button. False if there is none.
    bool takeKeyboard() const;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    std::vector<Line> reachable() const;
    bool handleKey(QPushButton &button, int key) const;

    std::function<std::vector<Line>()> const lines;
};

} // namespace tw
