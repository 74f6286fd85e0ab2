#pragma once

#include "Tarnwick/Settings/Defaults.h"
#include "Tarnwick/Viewer/ViewerController.h"

#include <QWidget>

#include <memory>

class QButtonGroup;
class QComboBox;
class QLineEdit;
class QToolButton;

namespace tw {

class BusySpinner;
class ElidedLabel;
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

    // What is on show, for tests.
    ElidedLabel const &statusLine() const { return *status; }

    QLineEdit &targetField() const { return *target; }

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void closeEvent(QCloseEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void show(ViewerScreen const &screen) override;
    void performInWindow(ViewerAction action) override;
    void copyText(std::u32string const &text) override;
    void beep() override;

    QWidget *buildBar();
    QToolButton *addButton(QWidget &bar, char const *title, ViewerAction action);
    void buildEncodings(QWidget &bar);
    void buildTarget();
    void connectText();
    void goToTyped();
    void closeTarget();
    void setTextSize(double size);

    std::shared_ptr<ViewerController> const viewer;
    Defaults &settings;
    QButtonGroup *const modes;
    QToolButton *wrap = nullptr;
    QComboBox *encodings = nullptr;
    BusySpinner *spinner = nullptr;
    ViewerTextView *const rows;
    QLineEdit *const target;
    ElidedLabel *const status;
};

} // namespace tw
