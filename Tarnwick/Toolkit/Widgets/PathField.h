#pragma once

#include "Tarnwick/Panes/PathCompletion.h"
#include "Tarnwick/Toolkit/Widgets/PathCrumbs.h"

#include <QLineEdit>
#include <QPointer>

#include <functional>
#include <optional>
#include <string>

namespace tw {

class BusySpinner;
class CompletionList;

/// Shows a path whose parts can be clicked, and takes another path that is typed. Whatever ends the typing without
/// Return gives up on it.
class PathField final : public QLineEdit {
public:
    explicit PathField(QWidget *parent = nullptr);

    /// `path` are bytes; what is not UTF-8 in them is shown repaired. A path that is being typed is not disturbed.
    void showPath(std::string const &path);

    /// Takes the keyboard. What is typed next replaces the path.
    void startEditing();

    /// Takes the keyboard, with a text that was typed before. Another text that is being typed meanwhile stays.
    void resumeEditing(std::string const &typed);

    /// For a text that has changed meanwhile, nothing happens. Several names are shown in a list, which the arrows and
    /// Tab go through, and which Escape and further typing close.
    void showCompletion(PathCompletion found);

    /// Null if there is none on screen.
    CompletionList *completions() const;

    /// A field of the pane that is not the active one steps back.
    void showActive(bool active);

    /// Turns at the end of the path while it is on its way.
    BusySpinner &spinner() const { return *busy; }

    /// The path as it stands while it is not edited.
    PathCrumbs const &parts() const { return crumbs; }

    /// Return was pressed on a text that was typed, UTF-8.
    std::function<void(std::string text)> onTyped;

    /// Return was pressed on the path as it was shown. It has its own bytes, which its text cannot tell.
    std::function<void()> onConfirmed;

    /// The folder was clicked that so many components of the path lead to; 0 is the root.
    std::function<void(int components)> onPartClicked;

    /// Tab was pressed on a text, UTF-8. `showCompletion` answers.
    std::function<void(std::string text)> onCompletionWanted;

    /// Return or Escape was pressed: the keyboard is wanted elsewhere.
    std::function<void()> onLeave;

    /// The field got the keyboard.
    std::function<void()> onEntered;

protected:
    bool event(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    bool focusNextPrevChild(bool next) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    void changeEvent(QEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    bool isEdited() const;
    void giveUp();
    void submit();
    void replaceText(std::string const &text);
    bool isOnCompletion() const;
    bool turnCompletion(PathCompletion::Turn direction);
    bool closeCompletions();
    void listCompletions();
    void arrangeParts();
    void hover(std::optional<int> components);
    void updateColors();

    BusySpinner *const busy;
    std::string shown;
    PathCrumbs crumbs;
    std::optional<int> hovered; ///< the components of the part under the mouse
    std::optional<int> pressed;
    std::optional<PathCompletion> completion; ///< as it stands in the field
    QPointer<CompletionList> list;            ///< null before it is needed
    bool isReplacing = false;                 ///< the text is changed by the field itself
    bool isActive = false;
};

} // namespace tw
