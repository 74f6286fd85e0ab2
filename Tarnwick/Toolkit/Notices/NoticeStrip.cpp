#include "Tarnwick/Toolkit/Notices/NoticeStrip.h"

#include "Tarnwick/Toolkit/Appearance/Wording.h"
#include "Tarnwick/Toolkit/Diagnostics/StartLog.h"
#include "Tarnwick/Toolkit/Notices/NoticeColors.h"
#include "Tarnwick/Toolkit/Notices/NoticeSign.h"
#include "Tarnwick/Toolkit/Table/KeyPresses.h"
#include "Tarnwick/Toolkit/Widgets/WrappedText.h"

#include <QAccessible>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QPainter>
#include <QPushButton>

#include <algorithm>

namespace tw {

namespace {

constexpr int margin = 8;
constexpr int gap = 6;
constexpr int lineHeight = 1;

/// A text that would be narrower beside the buttons gets the whole width, and the buttons stand below.
constexpr int leastTextWidth = 220;

char const *titleOf(PaneNotice::Action action)
{
    using Action = PaneNotice::Action;
    switch (action) {
    case Action::retry:
        return "Retry";
    case Action::logIn:
        return "Log In…";
    case Action::details:
        return "Details";
    case Action::showKey:
        return "Show Key";
    case Action::giveUp:
        return "Give Up";
    }
    return "";
}

} // namespace

struct NoticeStrip::Places {
    QRect sign;
    QRect text;
    std::vector<QRect> buttons;
    int height = 0;
};

NoticeStrip::NoticeStrip(QWidget *parent) : QWidget(parent), sign(new NoticeSign(this)), words(new WrappedText(this))
{
    QSizePolicy policy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
    applyColors();
}

bool NoticeStrip::hasButtonsOf(PaneNotice const &notice) const
{
    return notice.actions == shown.actions && actionButtons.size() == notice.actions.size();
}

void NoticeStrip::showNotice(PaneNotice const &notice)
{
    auto const isNews = isHidden() || notice.kind != shown.kind;
    if (!hasButtonsOf(notice))
        makeButtons(notice.actions);
    shown = notice;
    sign->setKind(notice.kind);
    auto const text = Wording::shown(notice.text);
    if (isHidden() || text != words->text())
        StartLog::note(QStringLiteral("strip shows ") + text);
    words->setText(text);
    setAccessibleName(words->text());
    applyColors();
    updateGeometry();
    arrange();
    setVisible(true);
    if (isNews) { // not each second of a wait
        QAccessibleEvent alert(this, QAccessible::Alert);
        QAccessible::updateAccessibility(&alert);
    }
}

void NoticeStrip::makeButtons(std::vector<PaneNotice::Action> const &wanted)
{
    for (auto *const old : std::exchange(actionButtons, {})) {
        old->hide();
        old->deleteLater(); // it may be the one that was just pressed
    }
    for (auto const action : wanted) {
        auto *const button = new QPushButton(Wording::shown(titleOf(action)), this);
        button->setFocusPolicy(Qt::TabFocus); // a click leaves the keyboard where it is
        button->installEventFilter(this);
        connect(button, &QPushButton::clicked, this, [this, action] {
            if (onAction)
                onAction(action);
        });
        button->show();
        actionButtons.push_back(button);
    }
}

bool NoticeStrip::takeKeyboard()
{
    if (actionButtons.empty() || isHidden())
        return false;
    actionButtons.front()->setFocus(Qt::OtherFocusReason);
    return true;
}

bool NoticeStrip::hasKeyboard() const
{
    return std::ranges::find(actionButtons, window()->focusWidget()) != actionButtons.end();
}

NoticeStrip::Places NoticeStrip::placesIn(int width) const
{
    Places places;
    places.sign = {{margin, margin}, sign->sizeHint()};
    auto const left = places.sign.right() + 1 + gap;
    auto const whole = std::max(width - margin - left, 1);
    auto rowWidth = 0;
    auto rowHeight = 0;
    for (auto const *const button : actionButtons) {
        rowWidth += gap + button->sizeHint().width();
        rowHeight = std::max(rowHeight, button->sizeHint().height());
    }
    auto const beside = whole - rowWidth;
    auto const isBeside = beside >= std::min(leastTextWidth, words->naturalWidth());
    auto const textWidth = isBeside ? beside : whole;
    auto const textHeight = words->heightForWidth(textWidth);
    // One line of text stands in the middle of its buttons.
    auto const textTop = margin + (isBeside ? std::max(rowHeight - textHeight, 0) / 2 : 0);
    places.text = {left, textTop, textWidth, textHeight};
    places.sign.moveTop(textTop);

    auto x = isBeside ? left + beside + gap : left;
    auto y = isBeside ? margin : places.text.bottom() + 1 + gap;
    for (auto const *const button : actionButtons) {
        auto const size = button->sizeHint().boundedTo({whole, rowHeight});
        if (x > left && x + size.width() > width - margin) { // too many for one row
            x = left;
            y += rowHeight + gap;
        }
        places.buttons.emplace_back(QPoint(x, y), size);
        x += size.width() + gap;
    }
    auto const lowest = places.buttons.empty() ? 0 : places.buttons.back().bottom() + 1;
    places.height = std::max(places.text.bottom() + 1, lowest) + margin + lineHeight;
    return places;
}

void NoticeStrip::arrange()
{
    auto const places = placesIn(width());
    sign->setGeometry(places.sign);
    words->setGeometry(places.text);
    for (std::size_t i = 0; i < actionButtons.size(); ++i)
        actionButtons[i]->setGeometry(places.buttons[i]);
}

int NoticeStrip::heightForWidth(int width) const
{
    return placesIn(width).height;
}

QSize NoticeStrip::sizeHint() const
{
    return {width(), heightForWidth(width())};
}

QSize NoticeStrip::minimumSizeHint() const
{
    return {0, sign->sizeHint().height() + 2 * margin};
}

bool NoticeStrip::eventFilter(QObject *watched, QEvent *event)
{
    auto *const button = qobject_cast<QPushButton *>(watched);
    if (button && event->type() == QEvent::KeyPress && handleKey(*button, *static_cast<QKeyEvent *>(event)))
        return true;
    if (button && (event->type() == QEvent::FocusIn || event->type() == QEvent::FocusOut)) {
        // Not every style shows which button has the keyboard if the keyboard came without Tab.
        auto const hasIt = event->type() == QEvent::FocusIn;
        button->setDefault(hasIt);
        if (onKeyboard)
            onKeyboard(hasIt ? Keyboard::come : Keyboard::gone);
    }
    return QWidget::eventFilter(watched, event);
}

bool NoticeStrip::handleKey(QPushButton &button, QKeyEvent &event)
{
    auto const key = keyPressOf(event);
    if (key.isPlain()) {
        switch (key.key) {
        case Key::enter:
            // A key that is held from before the strip came chooses nothing.
            if (!event.isAutoRepeat())
                button.click();
            return true;
        case Key::left:
            goTo(button, -1);
            return true;
        case Key::right:
            goTo(button, 1);
            return true;
        case Key::space:
            return false; // a button's own
        default:
            break;
        }
    }
    return onKey && onKey(key);
}

void NoticeStrip::goTo(QPushButton const &from, int step)
{
    auto const here = std::ranges::find(actionButtons, &from) - actionButtons.begin();
    auto const last = static_cast<std::ptrdiff_t>(actionButtons.size()) - 1;
    actionButtons[static_cast<std::size_t>(std::clamp<std::ptrdiff_t>(here + step, 0, last))]->setFocus(
        Qt::OtherFocusReason);
}

void NoticeStrip::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    arrange();
}

void NoticeStrip::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::ApplicationPaletteChange || event->type() == QEvent::StyleChange)
        applyColors();
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange) {
        updateGeometry();
        arrange();
    }
}

void NoticeStrip::applyColors()
{
    auto colors = QGuiApplication::palette();
    auto const own = NoticeColors::of(shown.kind, colors);
    colors.setColor(QPalette::Window, own.ground);
    colors.setColor(QPalette::WindowText, own.text);
    colors.setColor(QPalette::Link, own.sign);
    setPalette(colors);
}

void NoticeStrip::paintEvent(QPaintEvent * /*event*/)
{
    QPainter painter(this);
    painter.fillRect(rect(), palette().color(QPalette::Window));
    painter.fillRect(0, height() - lineHeight, width(), lineHeight, palette().color(QPalette::Link));
}

} // namespace tw
