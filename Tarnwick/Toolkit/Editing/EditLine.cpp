#include "Tarnwick/Toolkit/Editing/EditLine.h"

#include "TWCore/Model/DisplayText.h"
#include "Tarnwick/Toolkit/Appearance/Wording.h"
#include "Tarnwick/Toolkit/Widgets/ElidedLabel.h"

#include <QFontDatabase>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QResizeEvent>
#include <QVBoxLayout>

namespace tw {

namespace {

using Question = EditState::Question;

constexpr int gap = 6;
constexpr int pathSize = 11; ///< pixels of 1/96 inch

struct Choices {
    std::array<char const *, 3> titles; ///< null: there is no such button
};

Choices choicesOf(Question question)
{
    switch (question) {
    case Question::conflict:
        return {{"Overwrite", "Save Beside", "Done"}};
    case Question::leaving:
        return {{"Upload", "Discard", "Cancel"}};
    case Question::none:
        break;
    }
    return {{"Upload Now", "Done", nullptr}};
}

} // namespace

EditLine::EditLine(std::shared_ptr<RemoteEditSession> shown, QWidget *parent)
    : QWidget(parent),
      edited(std::move(shown)),
      path(new QLabel(this)),
      status(new ElidedLabel(this)),
      note(new QLabel(this))
{
    auto font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    font.setPixelSize(pathSize);
    path->setFont(font);
    path->setTextFormat(Qt::PlainText);
    path->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    path->setIndent(gap);
    note->setTextFormat(Qt::PlainText);
    note->setWordWrap(true);
    note->setIndent(gap);
    auto *const column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(gap / 2);
    column->addWidget(path);
    column->addWidget(note);
    column->addWidget(status);
    auto *const row = new QHBoxLayout;
    row->setSpacing(gap);
    row->addStretch();
    for (std::size_t index = 0; index < choices.size(); ++index) {
        auto *const button = new QPushButton(this);
        button->setFocusPolicy(Qt::TabFocus); // a click leaves the keyboard where it is
        connect(button, &QPushButton::clicked, this, [this, index] { press(index); });
        row->addWidget(button);
        choices[index] = button;
    }
    column->addLayout(row);
}

void EditLine::refresh(Path shownPath)
{
    auto const &state = edited->state();
    auto const host = shownPath == Path::ofHost ? state.connection + ':' : std::string();
    auto const whole = QString::fromStdString(onOneLine(host + state.path));
    path->setToolTip(whole.toHtmlEscaped());
    setAccessibleName(whole);
    shortenPath();
    status->setText(Wording::shown(state.status));
    note->setText(Wording::shown(state.note));
    note->setVisible(!state.note.isEmpty());
    auto const titles = choicesOf(state.question).titles;
    for (std::size_t index = 0; index < choices.size(); ++index) {
        auto *const button = choices[index];
        button->setVisible(titles[index]);
        if (titles[index])
            button->setText(Wording::shown(titles[index]));
    }
    choices[0]->setEnabled(!state.isUploading);
}

/// In the middle: the host and the name stay.
void EditLine::shortenPath()
{
    path->setText(path->fontMetrics().elidedText(accessibleName(), Qt::ElideMiddle, width() - 2 * gap));
}

void EditLine::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    shortenPath();
}

void EditLine::press(std::size_t button)
{
    // Kept, since the session may end with the answer.
    auto const session = edited;
    auto const question = session->state().question;
    if (question == Question::conflict && button == 0)
        session->overwrite();
    else if (question == Question::conflict && button == 1)
        session->saveBeside();
    else if (question == Question::leaving && button == 1)
        session->discard();
    else if (question == Question::leaving && button == 2)
        session->stay();
    else if (button == 0)
        session->uploadNow();
    else
        session->done();
}

} // namespace tw
