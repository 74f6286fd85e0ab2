#include "Tarnwick/Toolkit/Dialogs/WordsSheet.h"

#include "Tarnwick/Toolkit/Appearance/Wording.h"
#include "Tarnwick/Toolkit/Dialogs/WordsView.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QPushButton>

namespace tw {

WordsSheet::WordsSheet(Text const &title, std::string const &words, QWidget *window)
    : Sheet(Wording::shown(title), {}, window), wordsView(new WordsView(words, this))
{
    wordsView->setAccessibleName(Wording::shown(title));
    addContent(wordsView);

    auto *const copy = buttons().addButton(Wording::shown("Copy"), QDialogButtonBox::ActionRole);
    connect(copy, &QPushButton::clicked, this, &WordsSheet::copyAll);
    auto *const close = buttons().addButton(Wording::shown("Close"), QDialogButtonBox::RejectRole);
    close->setDefault(true);
    close->setFocus();
}

void WordsSheet::copyAll()
{
    QGuiApplication::clipboard()->setText(wordsView->toPlainText());
}

} // namespace tw
