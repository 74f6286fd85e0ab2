#pragma once

#include "Tarnwick/Editing/EditSessions.h"
#include "Tarnwick/Toolkit/Widgets/ButtonLines.h"

#include <QPointer>
#include <QWidget>

#include <functional>
#include <memory>
#include <vector>

class QScrollArea;
class QVBoxLayout;

namespace tw {

class EditLine;

/// The files of hosts that are being edited, each with its state and its buttons. Hidden while there are none.
///
/// Under X11 a small window that stays in front of all others, so that the state is seen beside the editor, and that
/// never takes the keyboard by itself. Elsewhere no window may stay in front, and it is a strip of the main window.
class EditStrip final : public QWidget {
    Q_OBJECT

public:
    enum class Place { ownWindow, mainWindow };

    /// That of the platform that the program runs on.
    static Place usualPlace();

    EditStrip(std::shared_ptr<EditSessions> edits, Place place, QWidget *parent);
    ~EditStrip() override;

    std::vector<EditLine *> const &shownLines() const noexcept { return lines; }

    /// False if there is nothing to go to.
    bool takeKeyboard();

    /// The keyboard is to be somewhere else.
    std::function<void()> onLeave;

protected:
    void closeEvent(QCloseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    void sync();
    std::vector<ButtonLines::Line> buttons() const;
    void fit();

    std::shared_ptr<EditSessions> const sessions;
    Place const place;
    QScrollArea *const area;
    ButtonLines *const keyboard;
    QVBoxLayout *column = nullptr;
    std::vector<EditLine *> lines;
};

} // namespace tw
