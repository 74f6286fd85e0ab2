#pragma once

#include <QListWidget>

#include <functional>
#include <optional>

namespace tw {

/// The names that a text may be completed to, in a list below its field. The list lies on the window and never takes
/// the keyboard, which stays with the text.
class CompletionList final : public QListWidget {
public:
    /// What is on screen at once; the rest is scrolled to.
    static constexpr int mostRows = 10;

    /// `field` is what is completed, and has a window.
    explicit CompletionList(QWidget &field);

    void showNames(QStringList const &names);

    /// Which of the names stands in the field, if one does.
    void showCurrent(std::optional<std::size_t> row);

    /// A name was clicked.
    std::function<void(int row)> onPicked;

private:
    void place();

    QWidget &anchor;
};

} // namespace tw
