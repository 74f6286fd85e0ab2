#include "Tarnwick/Toolkit/Widgets/TypeAheadMenu.h"

#include <QApplication>
#include <QKeyEvent>
#include <QProxyStyle>

namespace tw {

namespace {

/// The application's style, but for the one thing.
class ScrollingStyle final : public QProxyStyle {
public:
    ScrollingStyle() : QProxyStyle(QApplication::style()->name()) {}

    int styleHint(StyleHint hint, QStyleOption const *option, QWidget const *widget,
                  QStyleHintReturn *answer) const override
    {
        return hint == SH_Menu_Scrollable ? 1 : QProxyStyle::styleHint(hint, option, widget, answer);
    }
};

} // namespace

TypeAheadMenu::TypeAheadMenu(QWidget *parent) : QMenu(parent)
{
    auto *const style = new ScrollingStyle;
    style->setParent(this);
    setStyle(style);
}

bool TypeAheadMenu::isLetter(QKeyEvent const &event)
{
    auto const modifiers = event.modifiers() & ~(Qt::ShiftModifier | Qt::KeypadModifier);
    return modifiers == Qt::NoModifier && !event.text().isEmpty() && event.text().at(0).isPrint() &&
           event.key() != Qt::Key_Space; // which chooses
}

void TypeAheadMenu::keyPressEvent(QKeyEvent *event)
{
    if (onKey && onKey(*event))
        return;
    auto const all = actions();
    if (isLetter(*event))
        goTo(event->text());
    else if (event->key() == Qt::Key_Home)
        goToFirstOf(all.begin(), all.end());
    else if (event->key() == Qt::Key_End)
        goToFirstOf(all.rbegin(), all.rend());
    else
        QMenu::keyPressEvent(event);
}

template <class Iterator>
void TypeAheadMenu::goToFirstOf(Iterator begin, Iterator end)
{
    auto const found =
        std::find_if(begin, end, [](auto const *each) { return each->isEnabled() && !each->isSeparator(); });
    if (found != end)
        setActiveAction(*found);
}

void TypeAheadMenu::hideEvent(QHideEvent *event)
{
    typed.clear();
    QMenu::hideEvent(event);
}

void TypeAheadMenu::goTo(QString const &letters)
{
    if (!sinceTyped.isValid() || sinceTyped.hasExpired(QApplication::keyboardInputInterval()))
        typed.clear();
    sinceTyped.start();
    // One letter again and again goes through the titles that begin with it.
    auto const isRepeated = typed == letters;
    if (!isRepeated)
        typed += letters;

    auto const all = actions();
    auto const start = all.indexOf(activeAction());
    // A word that is typed on may have brought the highlight to its title already.
    auto const first = typed == letters ? start + 1 : std::max(start, qsizetype(0));
    for (qsizetype step = 0; step < all.size(); ++step) {
        auto *const each = all.at((first + step) % all.size());
        if (each->isEnabled() && each->data().toString().startsWith(typed, Qt::CaseInsensitive)) {
            setActiveAction(each);
            return;
        }
    }
}

} // namespace tw
