#pragma once

#include "Tarnwick/Editing/EditSessions.h"
#include "Tarnwick/Toolkit/Editing/EditLine.h"
#include "Tarnwick/Toolkit/Widgets/ButtonLines.h"

#include <QPointer>
#include <QWidget>

#include <functional>
#include <memory>
#include <vector>

class QScrollArea;
class QVBoxLayout;

namespace tw {

/// The files of hosts that are being edited, each with its state and its buttons. Hidden while there are none.
///
/// Under X11 a small window that stays in front of all others, so that the status is seen beside the editor. It never
/// takes the keyboard by itself. Elsewhere no window may stay in front, and it is a strip of the main window.
class EditStrip final : public QWidget {
    Q_OBJECT

public:
    enum class Place { ownWindow, mainWindow };

    /// The place for the platform that the program runs on.
    static Place usualPlace();

    EditStrip(std::shared_ptr<EditSessions> edits, Place place, QWidget *parent);
    ~EditStrip() override;

    std::vector<EditLine *> const &shownLines() const noexcept { return lines; }

    /// Gives the keyboard to the first button. False if no file is being edited.
    bool takeKeyboard();

    /// From now on its window closes with the files in it. Otherwise it would keep the program from quitting.
    void letClose() noexcept { mayClose = true; }

    /// The keyboard leaves the strip.
    std::function<void()> onLeave;

protected:
    void closeEvent(QCloseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    void sync();
    std::vector<ButtonLines::Line> buttons() const;
    EditLine::Path pathToShow() const;
    void nameWindow();
    void fit();

    std::shared_ptr<EditSessions> const sessions;
    Place const place;
    QScrollArea *const area;
    ButtonLines *const keyboard;
    QVBoxLayout *column = nullptr;
    std::vector<EditLine *> lines;
    bool mayClose = false;
};

} // namespace tw
