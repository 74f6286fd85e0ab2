#pragma once

#include <QTextEdit>

namespace tw {

/// The message of a sheet: plain text of a fixed width, which is broken anywhere if need be, can be copied, and scrolls
/// when it is long. Names of files have no blanks to break at, and a host can send any number of lines.
class SheetText final : public QTextEdit {
public:
    SheetText(QString const &text, QWidget *parent);

    /// Makes the text that wide if it is narrower.
    void widen(int width);

    QSize sizeHint() const override;

    QSize minimumSizeHint() const override { return sizeHint(); }

private:
    int textWidth;
};

} // namespace tw
