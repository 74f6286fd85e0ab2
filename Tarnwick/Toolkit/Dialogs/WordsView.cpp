#include "Tarnwick/Toolkit/Dialogs/WordsView.h"

#include "TWCore/Model/DisplayText.h"

#include <QFontDatabase>

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

WordsView::WordsView(std::string const &words, QWidget *parent) : QPlainTextEdit(parent)
{
    setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    setReadOnly(true);
    // The keyboard selects too, and Tab leads on to the buttons.
    setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    setTabChangesFocus(true);
    setPlainText(visible(words));
    QFontMetrics const metrics(font());
    auto const lines = std::clamp(document()->blockCount() + 1, leastLines, mostLines);
    setFixedSize(columns * metrics.averageCharWidth(), lines * metrics.lineSpacing());
}

} // namespace tw
