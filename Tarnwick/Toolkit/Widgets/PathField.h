#pragma once

#include <QLineEdit>

#include <functional>
#include <string>

namespace tw {

class BusySpinner;

/// Shows a path, and takes another one that is typed. Whatever ends the typing without Return gives up on it.
class PathField final : public QLineEdit {
public:
    explicit PathField(QWidget *parent = nullptr);

    /// `path` are bytes; what is not UTF-8 in them is shown repaired. A path that is being typed is not disturbed.
    void showPath(std::string const &path);

    /// A field of the pane that is not the active one steps back.
    void showActive(bool active);

    /// Turns at the end of the path while it is on its way.
    BusySpinner &spinner() const { return *busy; }

    /// Return was pressed on a text that was typed, UTF-8.
    std::function<void(std::string text)> onTyped;

    /// Return was pressed on the path as it was shown. It has its own bytes, which its text cannot tell.
    std::function<void()> onConfirmed;

    /// Return, Escape or Tab was pressed: the keyboard is wanted elsewhere.
    std::function<void()> onLeave;

    /// The field got the keyboard.
    std::function<void()> onEntered;

protected:
    void keyPressEvent(QKeyEvent *event) override;
    bool focusNextPrevChild(bool next) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    void changeEvent(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void giveUp();
    void submit();
    void updateColors();

    BusySpinner *const busy;
    std::string shown;
    bool isActive = false;
};

} // namespace tw
