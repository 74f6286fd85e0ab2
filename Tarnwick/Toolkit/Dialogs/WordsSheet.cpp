#include "Tarnwick/Toolkit/Dialogs/WordsSheet.h"

#include "TWCore/Model/DisplayText.h"
#include "Tarnwick/Toolkit/Appearance/Wording.h"

#include <QClipboard>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QPlainTextEdit>
#include <QPushButton>

#include <algorithm>

namespace tw {

namespace {

/// A line of ssh's box around a changed key has 60 characters.
constexpr int columns = 66;

/// A sheet has to fit on a small screen, so that more lines scroll.
constexpr int mostLines = 16;
constexpr int leastLines = 4;

/// What a host and its client say is bounded far below. This bounds the work of the layout in any case.
constexpr std::size_t mostBytes = 65'536;

QString visible(std::string_view words)
{
    words = words.substr(0, mostBytes);
    QString lines;
    for (std::size_t begin = 0; begin < words.size();) {
        auto const end = std::min(words.find('\n', begin), words.size());
        auto line = words.substr(begin, end - begin);
        if (line.ends_with('\r'))
            line.remove_suffix(1);
        if (begin > 0)
            lines += QLatin1Char('\n');
        lines += QString::fromStdString(onOneLine(line));
        begin = end + 1;
    }
    return lines;
}

} // namespace

WordsSheet::WordsSheet(Text const &title, std::string const &words, QWidget *window)
    : Sheet(Wording::shown(title), {}, window), wordsView(new QPlainTextEdit(this))
{
    wordsView->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    wordsView->setReadOnly(true);
    // The keyboard selects too, and Tab leads on to the buttons.
    wordsView->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    wordsView->setTabChangesFocus(true);
    wordsView->setPlainText(visible(words));
    wordsView->setAccessibleName(Wording::shown(title));
    QFontMetrics const metrics(wordsView->font());
    auto const lines = std::clamp(wordsView->document()->blockCount() + 1, leastLines, mostLines);
    wordsView->setFixedSize(columns * metrics.averageCharWidth(), lines * metrics.lineSpacing());
    addContent(wordsView);

    auto *const copy = buttons().addButton(Wording::shown("Copy"), QDialogButtonBox::ActionRole);
    copy->setAutoDefault(false);
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
