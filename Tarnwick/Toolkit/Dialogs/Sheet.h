#pragma once

#include <QDialog>
#include <QDialogButtonBox>
#include <QStyle>

class QVBoxLayout;

namespace tw {

class SheetText;

/// What all sheets have in common: a title, a message and a row of buttons over one window, which takes no input
/// meanwhile. Nothing waits inside of it: it is opened, and says when it is finished.
class Sheet : public QDialog {
    Q_OBJECT

public:
    /// The texts are plain, never markup. `icon` is one of QStyle's, or none.
    Sheet(QString const &title, QString const &message, QWidget *window,
          std::optional<QStyle::StandardPixmap> icon = std::nullopt);

    /// Adds what the sheet is about, below the message, which becomes as wide as a content of a fixed width.
    void addContent(QWidget *content);

    QDialogButtonBox &buttons() const { return *buttonRow; }

    /// Gives the keyboard that it had back to its window when it goes: not every desktop does.
    void setVisible(bool visible) override;

private:
    QVBoxLayout *const column;
    SheetText *const text; ///< null: the sheet has a title only
    QDialogButtonBox *const buttonRow;
};

} // namespace tw
