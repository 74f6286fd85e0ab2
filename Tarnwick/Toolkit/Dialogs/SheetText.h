#pragma once

#include <QTextEdit>

namespace tw {

/// The message of a sheet: plain text of a fixed width, which is broken anywhere if need be, can be copied, and scrolls
/// when it is longer than the screen has room for. Names of files have no blanks to break at, and a host can send any
/// number of lines.
class SheetText final : public QTextEdit {
public:
    SheetText(QString const &text, QWidget *parent);

    /// Makes the text that wide if it is narrower.
    void widen(int width);

    /// As high as the text may be. A few lines are shown in any case.
    void setRoom(int height);

    /// Something else in the sheet takes some of the room.
    void giveRoom(int height) { setRoom(room - height); }

    QSize sizeHint() const override;

    QSize minimumSizeHint() const override { return sizeHint(); }

private:
    int textWidth;
    int room = 0;
};

} // namespace tw
