#pragma once

#include "Tarnwick/Table/KeyPress.h"
#include "Tarnwick/Toolkit/Appearance/PaneLook.h"
#include "Tarnwick/Toolkit/Table/PaneHeaderView.h"
#include "Tarnwick/Toolkit/Table/PaneTableModel.h"

#include <QPointer>
#include <QTableView>

#include <functional>

namespace tw {

class NameEditor;
struct NameField;

/// The table of a pane. It takes the raw events and decides nothing: it reports keys, typed text and clicks, and the
/// controller places the cursor. Qt's own selection plays no part; its current cell follows the cursor for screen
/// readers.
///
/// Lifetime: `rows` outlives it.
class PaneTableView final : public QTableView {
public:
    explicit PaneTableView(PaneTableModel &rows, QWidget *parent = nullptr);

    /// The size of the rows' font, see `Settings::paneFontSize`.
    void setFontSize(double size);

    void reloadRows();
    void redrawRows();
    void showCursor(std::optional<int> row);
    void showActive(bool active);

    enum class DropTarget { none, row, allRows };

    /// Outlines where a drag would be dropped.
    void showDropTarget(DropTarget target, int row = 0);

    int firstVisibleRow() const;
    void scrollToFirstVisibleRow(int row);
    int wholeVisibleRows() const;

    /// Opens a field over a name. Whatever ends the edit is reported, and `hideNameField` closes the field.
    void showNameField(NameField const &field);
    std::string textOfNameField() const;
    void hideNameField();

    PaneHeaderView &titles() const { return *header; }

    /// Whether the key was used. What was not goes on to the widgets around.
    std::function<bool(KeyPress const &key)> onKey;

    /// Text that an input method has committed.
    std::function<void(std::string const &text)> onTextTyped;

    /// Text that an input method composes; empty: it has given the text up.
    std::function<void(std::string const &text)> onTextComposed;

    std::function<void(int row, ClickModifiers held)> onRowClicked;
    std::function<void(int row)> onRowDoubleClicked;

    /// The mouse draws a row, or all that are marked.
    std::function<void()> onDragWanted;

    /// A click on the name under the cursor, in a table that had the keyboard.
    std::function<void(int row)> onNameClickedAgain;

    /// Return and Escape in the field of a name, and that the keyboard has left the field.
    std::function<void()> onNameConfirmed;
    std::function<void()> onNameCancelled;
    std::function<void()> onNameLeft;

    /// The table got the keyboard.
    std::function<void()> onEntered;

    /// Rows have been painted.
    std::function<void()> onPainted;

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void inputMethodEvent(QInputMethodEvent *event) override;
    QVariant inputMethodQuery(Qt::InputMethodQuery query) const override;
    bool focusNextPrevChild(bool next) override;
    void focusInEvent(QFocusEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void showEvent(QShowEvent *event) override;
    bool event(QEvent *event) override;
    void changeEvent(QEvent *event) override;
    bool viewportEvent(QEvent *event) override;

private:
    struct Press {
        int row = 0;
        QPoint place = {};
        bool isClickPending = false; ///< it becomes a click if it does not become a drag
    };

    void applyFonts();
    void applyColors();
    void redrawRow(std::optional<int> row);
    void scrollIntoView(int row);
    bool isAgainOnName(QMouseEvent const &press) const;
    int widthOfContents(PaneColumn column) const;
    bool showNameTip(QHelpEvent const &event);
    bool isInView(int row, int viewHeight) const;
    QRect rowRect(int row) const;
    int heightOfRows() const;

    PaneHeaderView *const header;
    PaneLook look;
    double fontSize = 0;
    /// Where the rows are to stand when the view is shown: before, it is not laid out. Nothing: wherever they are.
    std::optional<int> firstRowWhenShown;
    bool bringCursorIntoViewWhenShown = false;
    QPointer<NameEditor> nameEditor;
    bool isEditEndedByPress = false;  ///< the press itself comes next
    bool keyboardCameByClick = false; ///< no press has come since
    DropTarget dropTarget = DropTarget::none;
    int dropRow = 0;
    std::optional<Press> rowPress;            ///< that a drag may come of
    std::optional<int> nameMayBeClickedAgain; ///< the row of a press that may be the first half of such a click
};

} // namespace tw
