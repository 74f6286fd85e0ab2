#include "Tarnwick/Toolkit/Dialogs/ConflictSheet.h"

#include "Tarnwick/Operations/CountPhrase.h"
#include "Tarnwick/Toolkit/Appearance/Wording.h"
#include "Tarnwick/Toolkit/Dialogs/ConflictTable.h"

#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>

#include <algorithm>

namespace tw {

namespace {

/// On a small window the sheet takes nearly all of it; on a large one, names are still read without moving the head.
constexpr int mostWidth = 860;
constexpr int leastWidth = 500;

/// Of the window, what the sheet needs beside the table and above and below it.
constexpr int aroundWidth = 80;
constexpr int aroundHeight = 280;

} // namespace

ConflictSheet::ConflictSheet(Dialogs::Conflicts question, QWidget *window)
    : Sheet(Wording::shown(question.title), Wording::shown(question.message), window),
      model(new ConflictModel(std::move(question.names), this)),
      names(new ConflictTable(*model, this)),
      replace(addAnswer("&Replace", NameConflict::Answer::replace)),
      keepBoth(addAnswer("&Keep Both", NameConflict::Answer::keepBoth)),
      skip(addAnswer("&Skip", NameConflict::Answer::skip)),
      count(new QLabel(this))
{
    names->fitInto(std::clamp(window->width() - aroundWidth, leastWidth, mostWidth), window->height() - aroundHeight);
    addContent(names);
    // Return never means to replace, wherever the keyboard is.
    replace->setAutoDefault(false);
    skip->setDefault(true);
    buttons().addButton(Wording::shown("Cancel"), QDialogButtonBox::RejectRole);
    count->setTextFormat(Qt::PlainText);
    addContent(count);
    if (model->rowCount() > 1) {
        proceed = buttons().addButton(Wording::shown("&Continue"), QDialogButtonBox::AcceptRole);
        proceed->setAutoDefault(false);
        names->onAnswered = [this] { showCount(); };
    } else {
        names->onAnswered = [this] {
            if (model->answers().openCount() == 0)
                accept();
        };
    }
    showCount();
    names->setFocus();
}

QPushButton *ConflictSheet::addAnswer(char const *title, NameConflict::Answer answer)
{
    auto *const button = buttons().addButton(Wording::shown(title), QDialogButtonBox::ActionRole);
    connect(button, &QPushButton::clicked, this, [this, answer] {
        model->answerRest(answer);
        if (model->answers().openCount() == 0)
            accept();
        else
            showCount();
    });
    return button;
}

/// The buttons stand for the names without an answer, so that no single answer is lost by one of them.
void ConflictSheet::showCount()
{
    auto const open = model->answers().openCount();
    auto const isDone = open == 0;
    auto const isReplaceOpen = model->answers().isReplaceOpen();
    Text words("R, K and S answer for the selected names, the buttons for the rest (%@).",
               {grouped(static_cast<std::int64_t>(open))});
    if (isDone)
        words = "Every name has its answer.";
    else if (!isReplaceOpen)
        words = "A folder and a file do not replace each other.";
    count->setText(Wording::shown(words));
    count->setVisible(proceed || !isReplaceOpen);
    replace->setEnabled(isReplaceOpen);
    keepBoth->setEnabled(!isDone);
    skip->setEnabled(!isDone);
    if (proceed)
        proceed->setEnabled(isDone);
    (isDone && proceed ? proceed : skip)->setDefault(true);
}

std::vector<NameConflict::Answer> ConflictSheet::answers() const
{
    return model->answers().all();
}

void ConflictSheet::keyPressEvent(QKeyEvent *event)
{
    auto const isReturn = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    // One that is still held from the question before answers nothing here.
    if (isReturn && (event->isAutoRepeat() || replace->hasFocus()))
        return;
    Sheet::keyPressEvent(event);
}

} // namespace tw
