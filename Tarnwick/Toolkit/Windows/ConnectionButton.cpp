#include "Tarnwick/Toolkit/Windows/ConnectionButton.h"

#include "TWCore/Model/DisplayText.h"
#include "Tarnwick/Toolkit/Appearance/Contrast.h"
#include "Tarnwick/Toolkit/Appearance/PaneColors.h"
#include "Tarnwick/Toolkit/Appearance/Wording.h"
#include "Tarnwick/Toolkit/Widgets/PathStrip.h"
#include "Tarnwick/Toolkit/Widgets/TypeAheadMenu.h"

#include <QHelpEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QToolTip>

namespace tw {

namespace {

constexpr int iconEdge = 16;
constexpr int gap = 6;

/// Left of the icon, so that the title begins where the names in the rows below do.
constexpr int leftMargin = 6;

constexpr int arrowWidth = 7;
constexpr int arrowHeight = 4;
constexpr qreal arrowStroke = 1.4;

/// The most room that a title takes, in the button and in the menu, in widths of an average letter.
constexpr int mostLettersInButton = 24;
constexpr int mostLettersInMenu = 60;

/// Between the button and its menu.
constexpr int menuDistance = 2;

/// How strong a tint tells that the button can be pressed, and that it is.
constexpr double hoverShare = 0.08;
constexpr double pressedShare = 0.16;

/// Of the line between the button and the path.
constexpr double separatorShare = 0.2;

/// The other things on the button: less than its title.
constexpr double arrowShare = 0.7;

QString titleOf(ConnectionItem const &item)
{
    return QString::fromStdString(withNothingHidden(Wording::shown(item.title).toStdString()));
}

QString withoutMnemonics(QString text)
{
    return text.replace(QLatin1Char('&'), QLatin1String("&&"));
}

} // namespace

ConnectionButton::ConnectionButton(QWidget *parent) : QAbstractButton(parent), choices(new TypeAheadMenu(this))
{
    setFocusPolicy(Qt::NoFocus);
    setAttribute(Qt::WA_Hover);
    // As high as the path beside it.
    setSizePolicy(QSizePolicy::Maximum, QSizePolicy::Ignored);
    choices->installEventFilter(this);
    choices->setToolTipsVisible(true);
    choices->onKey = [this](QKeyEvent const &event) { return filterKey(event); };
    // What a screen reader does to a button.
    connect(this, &QAbstractButton::clicked, this, [this] {
        if (onMenuWanted)
            onMenuWanted();
    });
    connect(choices, &QMenu::aboutToHide, this, [this] {
        opening = Opening::closed;
        update();
    });
    showConnection(localConnection);
}

void ConnectionButton::showConnection(std::string const &name)
{
    isHost = name != localConnection;
    auto const title = isHost ? QString::fromStdString(name) : Wording::shown(localTitle);
    setText(title);
    setIcon(QIcon(isHost ? QStringLiteral(":/icons/host.svg") : QStringLiteral(":/icons/computer.svg")));
    setAccessibleName(QStringLiteral("Connection: ") + title);
    updateGeometry();
    update();
}

void ConnectionButton::showActive(bool active)
{
    isActive = active;
    update();
}

void ConnectionButton::openMenu(std::vector<ConnectionItem> wanted)
{
    items = std::move(wanted);
    if (opening != Opening::closed)
        return;
    opening = Opening::onNextTurn;
    filter.clear();
    auto const open = [this] {
        if (isVisible())
            popUp();
        else
            opening = Opening::closed;
    };
    QMetaObject::invokeMethod(this, open, Qt::QueuedConnection);
}

void ConnectionButton::updateMenu(std::vector<ConnectionItem> wanted)
{
    if (opening == Opening::closed)
        return;
    items = std::move(wanted);
    if (opening != Opening::open)
        return;
    auto const *const active = choices->activeAction();
    auto const title = active ? active->data() : QVariant();
    // One that is open lays itself out again with each change to each item, which with many takes seconds.
    choices->hide();
    popUp();
    for (auto *const each : choices->actions()) {
        if (title.isValid() && each->isEnabled() && each->data() == title)
            choices->setActiveAction(each);
    }
}

void ConnectionButton::popUp()
{
    fillMenu();
    choices->popup(mapToGlobal(QPoint(0, height() + menuDistance)));
    QAction *start = nullptr;
    for (auto *const each : choices->actions()) {
        auto const isFirst = !start && !filter.isEmpty() && each->isEnabled() && !each->isSeparator();
        if (isFirst || (each->isChecked() && filter.isEmpty()))
            start = each;
    }
    if (start)
        choices->setActiveAction(start);
    opening = Opening::open;
    update();
}

bool ConnectionButton::filterKey(QKeyEvent const &event)
{
    if (!hasFilter(items))
        return false;
    if (TypeAheadMenu::isLetter(event))
        setFilter(filter + event.text());
    else if (filter.isEmpty())
        return false;
    else if (event.key() == Qt::Key_Backspace)
        setFilter(filter.chopped(1));
    else if (event.key() == Qt::Key_Escape)
        setFilter({});
    else
        return false;
    return true;
}

void ConnectionButton::setFilter(QString letters)
{
    filter = letters.left(mostLettersInMenu);
    // As in updateMenu: an open menu is slow to change.
    choices->hide();
    popUp();
}

void ConnectionButton::addFilterLine()
{
    auto const typed = filter.isEmpty() ? Wording::shown("Type to find a host") : filter + QLatin1Char('|');
    choices->addAction(withoutMnemonics(typed))->setEnabled(false);
    choices->addSeparator();
}

void ConnectionButton::fillMenu()
{
    choices->clear();
    // Of another colour than the table that it hangs over.
    auto colors = palette();
    colors.setColor(QPalette::Base, colors.color(QPalette::Window));
    choices->setPalette(colors);
    if (hasFilter(items))
        addFilterLine();
    for (auto const &item : shownItems(items, filter.toStdString())) {
        switch (item.kind) {
        case ConnectionItem::Kind::header:
            // The button itself stands above the menu and says it; for those who do not see it, it is the menu's name.
            choices->setAccessibleName(titleOf(item));
            break;
        case ConnectionItem::Kind::separator:
            choices->addSeparator();
            break;
        case ConnectionItem::Kind::local:
        case ConnectionItem::Kind::host:
        case ConnectionItem::Kind::note:
            addChoice(item);
            break;
        }
    }
}

void ConnectionButton::addChoice(ConnectionItem const &item)
{
    auto const title = titleOf(item);
    auto const &metrics = choices->fontMetrics();
    auto const shown = metrics.elidedText(title, Qt::ElideMiddle, mostLettersInMenu * metrics.averageCharWidth());
    auto *const action = new QAction(withoutMnemonics(shown), choices);
    action->setData(title);
    if (shown != title)
        action->setToolTip(QStringLiteral("<qt>%1</qt>").arg(title.toHtmlEscaped()));
    action->setEnabled(item.isEnabled);
    action->setCheckable(item.isChecked); // the others would get a box to tick
    action->setChecked(item.isChecked);
    connect(action, &QAction::triggered, this, [this, item] {
        if (onPicked)
            onPicked(item);
    });
    choices->addAction(action);
}

QSize ConnectionButton::sizeHint() const
{
    auto const &metrics = fontMetrics();
    // The path does not move when a short name takes the place of this computer's.
    auto const least = metrics.horizontalAdvance(Wording::shown(localTitle));
    auto const most = std::max(least, mostLettersInButton * metrics.averageCharWidth());
    // One more: an advance is rounded, and what is wider by a fraction would be shortened.
    auto const title = std::clamp(metrics.horizontalAdvance(text()), least, most) + 1;
    return {leftMargin + iconEdge + gap + title + gap + arrowWidth + 2 * PathStrip::sideMargin, metrics.height()};
}

QSize ConnectionButton::minimumSizeHint() const
{
    return {leftMargin + iconEdge + gap + arrowWidth + 2 * PathStrip::sideMargin, 0};
}

QRect ConnectionButton::titleRect() const
{
    auto const left = leftMargin + iconEdge + gap;
    auto const right = gap + arrowWidth + 2 * PathStrip::sideMargin;
    return rect().adjusted(left, PathStrip::verticalMargin, -right, -PathStrip::verticalMargin - PathStrip::lineHeight);
}

QString ConnectionButton::shownTitle() const
{
    // Hosts of one domain differ at their beginnings, numbered ones at their ends.
    return fontMetrics().elidedText(text(), Qt::ElideMiddle, titleRect().width());
}

QColor ConnectionButton::ink() const
{
    // A host is told from this computer at a glance.
    auto const colors = PaneColors::of(palette());
    auto const color = isHost ? colors.folder : colors.name;
    return isActive ? color : PathStrip::faded(color, palette());
}

bool ConnectionButton::event(QEvent *event)
{
    if (event->type() != QEvent::ToolTip)
        return QAbstractButton::event(event);
    if (shownTitle() == text())
        QToolTip::hideText();
    else
        QToolTip::showText(static_cast<QHelpEvent *>(event)->globalPos(),
                           QStringLiteral("<qt>%1</qt>").arg(text().toHtmlEscaped()), this);
    return true;
}

bool ConnectionButton::eventFilter(QObject *watched, QEvent *event)
{
    // A press on the button closes its menu, and must not open it again. Qt forgets the wish with each press.
    if (watched == choices && event->type() == QEvent::MouseButtonPress) {
        auto const where = static_cast<QMouseEvent *>(event)->globalPosition().toPoint();
        if (rect().contains(mapFromGlobal(where)))
            choices->setAttribute(Qt::WA_NoMouseReplay);
    }
    return QAbstractButton::eventFilter(watched, event);
}

void ConnectionButton::mousePressEvent(QMouseEvent *event)
{
    // At the press, as menus open; the release is the menu's.
    if (event->button() == Qt::LeftButton && onMenuWanted)
        onMenuWanted();
}

void ConnectionButton::paintEvent(QPaintEvent * /*event*/)
{
    QPainter painter(this);
    auto const base = palette().color(QPalette::Base);
    auto const textColor = palette().color(QPalette::Text);
    auto const tint = opening != Opening::closed ? pressedShare : underMouse() ? hoverShare : 0.0;
    painter.fillRect(rect(), blend(textColor, base, tint));

    auto const title = titleRect();
    painter.setOpacity(isActive ? 1.0 : arrowShare);
    icon().paint(&painter, leftMargin, title.center().y() - iconEdge / 2 + 1, iconEdge, iconEdge);
    painter.setOpacity(1.0);
    painter.setPen(ink());
    painter.drawText(title, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine, shownTitle());

    painter.fillRect(QRect(width() - 1, title.top() + 1, 1, title.height() - 2),
                     blend(textColor, base, separatorShare));
    PathStrip::paintLine(painter, rect(), palette(), isActive);

    painter.setRenderHint(QPainter::Antialiasing);
    QPainterPath arrow(QPointF(title.right() + 1 + gap, title.center().y() - 1));
    arrow.lineTo(arrow.currentPosition() + QPointF(arrowWidth / 2.0, arrowHeight));
    arrow.lineTo(arrow.currentPosition() + QPointF(arrowWidth / 2.0, -arrowHeight));
    painter.setPen(QPen(blend(ink(), base, arrowShare), arrowStroke, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.drawPath(arrow);
}

} // namespace tw
