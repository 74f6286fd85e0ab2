#pragma once

#include "Tarnwick/Settings/Defaults.h"
#include "Tarnwick/Viewer/ViewerController.h"

#include <QWidget>

#include <map>
#include <memory>

class QButtonGroup;
class QComboBox;
class QLineEdit;
class QStackedWidget;
class QToolButton;

namespace tw {

class BusySpinner;
class ElidedLabel;
class ViewerAskBar;
class ViewerImageView;
class ViewerTextView;

/// A window that shows one file.
///
/// Lifetime: deletes itself when it closes. `defaults` outlives it.
class ViewerWindow final : public QWidget, private ViewerDisplay {
public:
    /// Begins to read.
    ViewerWindow(std::shared_ptr<ViewerController> controller, Defaults &defaults);
    ~ViewerWindow() override;

    ViewerWindow(ViewerWindow const &) = delete;
    ViewerWindow &operator=(ViewerWindow const &) = delete;

    ViewerTextView &text() const { return *rows; }

    ViewerImageView &image() const { return *picture; }

    // What is on show, for tests.
    ElidedLabel const &statusLine() const { return *status; }

    /// Where it is typed what to look for, or where to go.
    QLineEdit &askField() const;

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void closeEvent(QCloseEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void show(ViewerScreen const &screen) override;
    void performInWindow(ViewerAction action) override;
    void copyText(std::u32string const &text) override;
    void beep() override;

    QWidget *buildBar();
    QToolButton *addButton(QWidget &bar, char const *title, ViewerAction action);
    void buildEncodings(QWidget &bar);
    void buildAskBar();
    void place();
    void perform(ViewerAction action);
    void showNeighbour(Neighbour which);
    void nameFile();
    void reportVisibility();
    void connectText();
    void setTextSize(double size);
    void performOnImage(ViewerAction action);

    std::shared_ptr<ViewerController> viewer; ///< another one for each file
    Defaults &settings;
    QButtonGroup *const modes;
    std::map<ViewerAction, QToolButton *> buttons;
    QToolButton *wrap = nullptr;
    QToolButton *follow = nullptr;
    QComboBox *encodings = nullptr;
    BusySpinner *spinner = nullptr;
    QStackedWidget *const body;
    ViewerTextView *const rows;
    ViewerImageView *const picture;
    ViewerAskBar *const bar;
    ElidedLabel *const status;
};

} // namespace tw
