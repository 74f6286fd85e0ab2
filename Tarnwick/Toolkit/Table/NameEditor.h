#pragma once

#include <QLineEdit>

#include <functional>

namespace tw {

/// The field over a row in which its name is edited. It grows with the name, as far as the table reaches.
///
/// Lifetime: a child of what it stands on, which it closes with.
class NameEditor final : public QLineEdit {
public:
    /// `place` is that of the name; `base` characters are selected.
    NameEditor(QWidget *table, QRect const &place, QString const &name, qsizetype base);

    /// The text, including what an input method still composes, which it commits for that.
    QString takeText();

    /// Return, Escape, or the keyboard went elsewhere. None is reported twice, and none after `close`.
    std::function<void()> onConfirmed;
    std::function<void()> onCancelled;
    std::function<void()> onLeft;

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    bool focusNextPrevChild(bool next) override;
    void inputMethodEvent(QInputMethodEvent *event) override;

private:
    void fit();

    int const leastWidth;
    QString composed; ///< not committed yet, and no part of the text
};

} // namespace tw
