#include "Tarnwick/Toolkit/Dialogs/PromptSheet.h"

#include "TWCore/Model/Trimmed.h"
#include "Tarnwick/Toolkit/Appearance/FieldText.h"
#include "Tarnwick/Toolkit/Appearance/Wording.h"

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

namespace tw {

PromptSheet::PromptSheet(Dialogs::Prompt const &question, QWidget *window)
    : Sheet(Wording::shown(question.title), Wording::shown(question.message), window),
      objection(question.objection),
      line(new QLineEdit(FieldText::ofBytes(question.initial), this)),
      complaintLine(new QLabel(this))
{
    line->setAccessibleName(windowTitle());
    addContent(line);
    complaintLine->setTextFormat(Qt::PlainText);
    complaintLine->setWordWrap(true);
    complaintLine->hide();
    addContent(complaintLine);
    auto *const ok = buttons().addButton(Wording::shown(question.okTitle), QDialogButtonBox::AcceptRole);
    ok->setDefault(true);
    buttons().addButton(Wording::shown("Cancel"), QDialogButtonBox::RejectRole);
    connect(line, &QLineEdit::textEdited, complaintLine, &QWidget::hide);
    line->selectAll();
    line->setFocus();
}

std::string PromptSheet::text() const
{
    return std::string(trimmed(FieldText::bytesOf(line->text())));
}

QString PromptSheet::complaint() const
{
    return complaintLine->isHidden() ? QString() : complaintLine->text();
}

void PromptSheet::accept()
{
    auto const wrong = objection ? objection(text()) : std::nullopt;
    if (!wrong) {
        Sheet::accept();
        return;
    }
    complaintLine->setText(QStringLiteral("⚠︎ ") + Wording::shown(*wrong));
    complaintLine->show();
    line->setFocus();
}

} // namespace tw
