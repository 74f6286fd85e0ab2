#pragma once

#include "Tarnwick/Editing/RemoteEditSession.h"

#include <QWidget>

#include <array>
#include <memory>

class QLabel;
class QPushButton;

namespace tw {

class ElidedLabel;

/// One file that is being edited: where it belongs, how it stands, and what can be done about it.
class EditLine final : public QWidget {
    Q_OBJECT

public:
    EditLine(std::shared_ptr<RemoteEditSession> shown, QWidget *parent);

    std::shared_ptr<RemoteEditSession> const &session() const noexcept { return edited; }

    void refresh();

    // For tests, and for the keyboard.
    ElidedLabel const &statusLine() const { return *status; }

    std::array<QPushButton *, 3> const &buttons() const noexcept { return choices; }

private:
    void press(std::size_t button);

    std::shared_ptr<RemoteEditSession> const edited;
    QLabel *const path;
    ElidedLabel *const status;
    QLabel *const note;
    std::array<QPushButton *, 3> choices = {};
};

} // namespace tw
