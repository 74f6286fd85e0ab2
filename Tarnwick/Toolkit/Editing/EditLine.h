#pragma once

#include "Tarnwick/Editing/RemoteEditSession.h"

#include <QWidget>

#include <array>
#include <memory>

class QLabel;
class QPushButton;

namespace tw {

class ElidedLabel;

/// One file that is being edited: its path on the host, its status, and its buttons.
class EditLine final : public QWidget {
    Q_OBJECT

public:
    EditLine(std::shared_ptr<RemoteEditSession> shown, QWidget *parent);

    std::shared_ptr<RemoteEditSession> const &session() const noexcept { return edited; }

    /// `Path::ofHost` where nothing else on the screen names the host.
    enum class Path { alone, ofHost };

    void refresh(Path shownPath);

    // For tests, and for the keyboard.
    ElidedLabel const &statusLine() const { return *status; }

    std::array<QPushButton *, 3> const &buttons() const noexcept { return choices; }

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    void shortenPath();
    void press(std::size_t button);

    std::shared_ptr<RemoteEditSession> const edited;
    QLabel *const path;
    ElidedLabel *const status;
    QLabel *const note;
    std::array<QPushButton *, 3> choices = {};
};

} // namespace tw
