#include "Tarnwick/Toolkit/Dialogs/Sheet.h"

#include "Tarnwick/Toolkit/Diagnostics/StartLog.h"
#include "Tarnwick/Toolkit/Dialogs/SheetText.h"

#include <QFontInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QScreen>

namespace tw {

namespace {

constexpr int margin = 20;
constexpr int iconSize = 48;

/// Of the screen, what a sheet needs above and below its message: the title, a field, the buttons, and its frame.
constexpr int aroundHeight = 260;

QLabel *heading(QString const &text, QWidget *parent)
{
    auto *const label = new QLabel(text, parent);
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    auto font = label->font();
    font.setPointSizeF(QFontInfo(font).pointSizeF() * 1.1);
    font.setWeight(QFont::DemiBold);
    label->setFont(font);
    return label;
}

/// Never what is typed: that is in fields.
void noteShown(Sheet const &sheet)
{
    if (!StartLog::isOn())
        return;
    auto words = sheet.windowTitle();
    for (auto const *const text : sheet.findChildren<SheetText *>())
        words += QLatin1Char(' ') + text->toPlainText();
    StartLog::note(QStringLiteral("sheet shows ") + words.simplified());
}

} // namespace

Sheet::Sheet(QString const &title, QString const &message, QWidget *window, std::optional<QStyle::StandardPixmap> icon)
    : QDialog(window),
      column(new QVBoxLayout),
      text(message.isEmpty() ? nullptr : new SheetText(message, this)),
      buttonRow(new QDialogButtonBox(this))
{
    setWindowTitle(title);
    auto *const all = new QVBoxLayout(this);
    all->setContentsMargins(margin, margin, margin, margin);
    all->setSpacing(margin);
    all->setSizeConstraint(QLayout::SetFixedSize);

    auto *const row = new QHBoxLayout;
    row->setSpacing(margin);
    if (icon) {
        auto *const picture = new QLabel(this);
        picture->setPixmap(style()->standardIcon(*icon, nullptr, this).pixmap(QSize(iconSize, iconSize)));
        row->addWidget(picture, 0, Qt::AlignTop);
    }
    column->setSpacing(margin / 2);
    column->addWidget(heading(title, this));
    if (text) {
        column->addWidget(text);
        text->setRoom(window->screen()->availableGeometry().height() - aroundHeight);
    }
    row->addLayout(column, 1);
    all->addLayout(row);
    all->addWidget(buttonRow);
    connect(buttonRow, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttonRow, &QDialogButtonBox::rejected, this, &QDialog::reject);
}

void Sheet::setVisible(bool visible)
{
    auto const hadKeyboard = isActiveWindow();
    QDialog::setVisible(visible);
    if (visible)
        noteShown(*this);
    if (!visible && hadKeyboard)
        parentWidget()->activateWindow();
}

void Sheet::addContent(QWidget *content)
{
    column->addWidget(content);
    if (!text)
        return;
    text->widen(content->minimumWidth());
    text->giveRoom(content->minimumHeight());
}

} // namespace tw
