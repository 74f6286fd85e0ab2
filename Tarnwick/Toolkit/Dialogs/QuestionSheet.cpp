#include "Tarnwick/Toolkit/Dialogs/QuestionSheet.h"

#include "Tarnwick/Toolkit/Appearance/Wording.h"
#include "Tarnwick/Toolkit/Dialogs/WordsView.h"

#include <QPushButton>

namespace tw {

namespace {

/// Of the text on a button that destroys; to be read on the button of a light and of a dark scheme.
constexpr QColor dangerOnLight(0xb3, 0x1b, 0x1b);
constexpr QColor dangerOnDark(0xff, 0x8a, 0x80);

void lookDangerous(QPushButton &button)
{
    auto colors = button.palette();
    auto const isDark = colors.color(QPalette::Button).lightnessF() < 0.5F;
    colors.setColor(QPalette::ButtonText, isDark ? dangerOnDark : dangerOnLight);
    button.setPalette(colors);
}

} // namespace

QuestionSheet::QuestionSheet(Dialogs::Confirmation const &question, QWidget *window)
    : Sheet(Wording::shown(question.title), Wording::shown(question.message), window,
            question.danger == Dialogs::Danger::destructive ? QStyle::SP_MessageBoxWarning
                                                            : QStyle::SP_MessageBoxQuestion)
{
    auto *const ok = buttons().addButton(Wording::shown(question.okTitle), QDialogButtonBox::AcceptRole);
    auto *const cancel = buttons().addButton(Wording::shown("Cancel"), QDialogButtonBox::RejectRole);
    auto const isDestructive = question.danger == Dialogs::Danger::destructive;
    if (isDestructive)
        lookDangerous(*ok);
    auto *const usual = isDestructive ? cancel : ok;
    usual->setDefault(true);
    usual->setFocus();
}

QuestionSheet::QuestionSheet(Dialogs::Choice const &question, QWidget *window)
    : Sheet(Wording::shown(question.title), Wording::shown(question.message), window, QStyle::SP_MessageBoxQuestion)
{
    for (std::size_t way = 0; way < question.ways.size(); ++way) {
        auto const isFirst = way == 0;
        auto *const button = buttons().addButton(Wording::shown(question.ways[way]),
                                                 isFirst ? QDialogButtonBox::AcceptRole : QDialogButtonBox::ActionRole);
        connect(button, &QPushButton::clicked, this, [this, way] {
            taken = way;
            accept();
        });
        if (isFirst) {
            button->setDefault(true);
            button->setFocus();
        }
    }
    buttons().addButton(Wording::shown("Cancel"), QDialogButtonBox::RejectRole);
}

QuestionSheet::QuestionSheet(Failure failure, QWidget *window)
    : Sheet(Wording::shown("Operation failed"), Wording::shownInLines(failure.message), window,
            QStyle::SP_MessageBoxCritical)
{
    auto *const ok = buttons().addButton(Wording::shown("OK"), QDialogButtonBox::AcceptRole);
    ok->setDefault(true);
    ok->setFocus();
}

QuestionSheet *QuestionSheet::ofError(Text const &message, std::string const &words, QWidget *window)
{
    auto *const sheet = new QuestionSheet(Failure{message}, window);
    if (!words.empty())
        sheet->offerDetails(words);
    return sheet;
}

void QuestionSheet::offerDetails(std::string const &words)
{
    auto *const view = new WordsView(words, this);
    view->setAccessibleName(Wording::shown("Details"));
    view->hide();
    addContent(view);
    auto *const details = buttons().addButton(Wording::shown("&Details"), QDialogButtonBox::ActionRole);
    details->setCheckable(true);
    connect(details, &QPushButton::toggled, view, &QWidget::setVisible);
}

} // namespace tw
