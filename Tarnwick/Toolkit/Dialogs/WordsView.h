#pragma once

#include <QPlainTextEdit>

#include <string>

namespace tw {

/// The words of a program or a host as they are, to read, select and copy. Scrolls when they are many.
class WordsView final : public QPlainTextEdit {
    Q_OBJECT

public:
    /// `words` are several lines of any bytes. Characters that cannot be seen have a sign in their place.
    WordsView(std::string const &words, QWidget *parent);
};

} // namespace tw
