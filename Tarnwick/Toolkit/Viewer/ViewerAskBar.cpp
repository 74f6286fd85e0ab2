#include "Tarnwick/Toolkit/Viewer/ViewerAskBar.h"

#include "Tarnwick/Toolkit/Appearance/Wording.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLineEdit>
#include <QToolButton>

namespace tw {

namespace {

constexpr int gapInAskBar = 4;

} // namespace

ViewerAskBar::ViewerAskBar(QWidget *parent) : QWidget(parent), line(new QLineEdit(this))
{
    auto *const row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(gapInAskBar);
    row->addWidget(line, 1);
    ignoresCase = addOption("&Ignore Case", "large and small letters are the same");
    isExpression = addOption("&Regular Expression", "what is typed is a regular expression, as Perl has them");
    line->installEventFilter(this);
    hide();
}

QToolButton *ViewerAskBar::addOption(char const *title, char const *help)
{
    auto *const button = new QToolButton(this);
    button->setText(Wording::shown(title));
    button->setToolTip(Wording::shown(help));
    button->setCheckable(true);
    button->setAutoRaise(true);
    button->setFocusPolicy(Qt::TabFocus);
    layout()->addWidget(button);
    return button;
}

void ViewerAskBar::ask(ViewerAction what)
{
    auto const isFind = what == ViewerAction::find;
    if (asked != what)
        line->clear();
    asked = what;
    line->setPlaceholderText(Wording::shown(isFind ? "find a text; in a hex dump also bytes, as 48 65"
                                                   : "a line, 50%, or an offset: 0x1F0, @1000, 12M"));
    line->setAccessibleName(Wording::shown(isFind ? "Find…" : "Go To…"));
    ignoresCase->setVisible(isFind);
    isExpression->setVisible(isFind);
    show();
    line->selectAll();
    line->setFocus();
}

/// Escape leaves the bar, and only then the window. What the field leaves over would be a key of the viewer.
bool ViewerAskBar::eventFilter(QObject *watched, QEvent *event)
{
    if (watched != line || event->type() != QEvent::KeyPress)
        return QWidget::eventFilter(watched, event);
    switch (static_cast<QKeyEvent const *>(event)->key()) {
    case Qt::Key_Escape:
        closeBar();
        return true;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        answered();
        return true;
    default:
        return false;
    }
}

void ViewerAskBar::answered()
{
    auto const typed = line->text().toStdString();
    auto const isTaken =
        asked == ViewerAction::find
            ? onFind(
                  {.typed = typed, .isExpression = isExpression->isChecked(), .ignoresCase = ignoresCase->isChecked()})
            : onGoTo(typed);
    if (isTaken)
        closeBar();
}

void ViewerAskBar::closeBar()
{
    hide();
    onClosed();
}

} // namespace tw
