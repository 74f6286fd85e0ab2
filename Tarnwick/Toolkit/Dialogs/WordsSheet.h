#pragma once

#include "TWCore/Model/Text.h"
#include "Tarnwick/Toolkit/Dialogs/Sheet.h"

#include <string>

namespace tw {

class WordsView;

/// The words of a program or a host, whole, to read, select and copy.
class WordsSheet final : public Sheet {
    Q_OBJECT

public:
    /// `words` are several lines of any bytes. Characters that cannot be seen have a sign in their place.
    WordsSheet(Text const &title, std::string const &words, QWidget *window);

    WordsView &text() const { return *wordsView; }

private:
    void copyAll();

    WordsView *const wordsView;
};

} // namespace tw
