#include "Tarnwick/Toolkit/Windows/WelcomeWindow.h"

#include "Tarnwick/Commands/CommandTable.h"
#include "Tarnwick/Settings/Settings.h"
#include "Tarnwick/Toolkit/Appearance/Wording.h"
#include "Tarnwick/Toolkit/Commands/CommandKeySequences.h"

#include <QFontInfo>
#include <QGridLayout>
#include <QIcon>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QVBoxLayout>

#include <algorithm>
#include <vector>

namespace tw {

namespace {

constexpr int margin = 24;
constexpr int iconSize = 64;
constexpr int textWidth = 440;
constexpr int rowGap = 4;

/// What a window manager puts around a window, and a scroll bar beside the keys.
constexpr QSize roomAround(36, 60);

QLabel *plain(QString const &text, QWidget *parent)
{
    auto *const label = new QLabel(text, parent);
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    return label;
}

QFont scaled(QFont font, double factor)
{
    font.setPointSizeF(QFontInfo(font).pointSizeF() * factor);
    font.setWeight(QFont::DemiBold);
    return font;
}

/// The keys and what they do. A longer explanation is wrapped to `width`.
QWidget *newKeys(int width, QWidget *parent)
{
    auto *const all = new QWidget(parent);
    auto *const grid = new QGridLayout(all);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setHorizontalSpacing(margin / 2);
    grid->setVerticalSpacing(rowGap);
    auto keyWidth = 0;
    std::vector<QLabel *> explanations;
    for (auto const &command : commandTable()) {
        if (command.firstSteps == FirstSteps::no)
            continue;
        auto const row = grid->rowCount();
        auto *const key = new QLabel(keyTextOf(command), all);
        key->setFont(scaled(key->font(), 1));
        keyWidth = std::max(keyWidth, key->sizeHint().width());
        grid->addWidget(key, row, 0, Qt::AlignTop);
        explanations.push_back(plain(Wording::shown(command.help), all));
        grid->addWidget(explanations.back(), row, 1);
    }
    auto longest = 0;
    for (auto const *const each : explanations)
        longest = std::max(longest, each->fontMetrics().horizontalAdvance(each->text()) + 1);
    for (auto *const each : explanations)
        each->setFixedWidth(std::min(longest, width - keyWidth - margin / 2));
    return all;
}

QLayout *newIntroduction(QWidget *parent)
{
    auto *const icon = new QLabel(parent);
    icon->setPixmap(
        QIcon(QStringLiteral(":/icons/tarnwick.svg")).pixmap(QSize(iconSize, iconSize), parent->devicePixelRatioF()));
    auto *const heading = plain(QStringLiteral("Remote folders that behave like local ones"), parent);
    heading->setFont(scaled(heading->font(), 1.5));
    heading->setMinimumWidth(textWidth);
    auto *const text = plain(QStringLiteral("Each pane shows a folder of this machine or of a host in ~/.ssh/config. A "
                                            "folder that you have seen opens at once, and is read again behind it. "
                                            "Nothing is installed on a host."),
                             parent);
    text->setMinimumWidth(textWidth);
    auto *const words = new QVBoxLayout;
    words->addWidget(heading);
    words->addWidget(text);
    auto *const row = new QHBoxLayout;
    row->setSpacing(margin);
    row->addWidget(icon, 0, Qt::AlignTop);
    row->addLayout(words, 1);
    return row;
}

} // namespace

WelcomeWindow::WelcomeWindow(QWidget *parent) : QDialog(parent)
{
    setWindowTitle(QStringLiteral("Welcome to Tarnwick"));
    auto *const all = new QVBoxLayout(this);
    all->setContentsMargins(margin, margin, margin, margin);
    all->setSpacing(margin / 2);
    all->setSizeConstraint(QLayout::SetFixedSize);
    all->addLayout(newIntroduction(this));
    auto *const start = new QPushButton(QStringLiteral("Start"), this);
    start->setDefault(true);
    connect(start, &QPushButton::clicked, this, &QDialog::accept);
    all->addWidget(start, 0, Qt::AlignRight);

    // On a small screen, or with large letters, the keys scroll.
    auto const room = screen()->availableGeometry().size() - roomAround;
    auto *const area = new QScrollArea(this);
    area->setWidget(newKeys(room.width() - 2 * margin, area));
    area->setFrameShape(QFrame::NoFrame);
    area->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    area->setAccessibleName(Wording::shown("Keys"));
    auto const keys = area->widget()->sizeHint();
    auto const mostHeight = std::max(room.height() - sizeHint().height() - all->spacing(), margin);
    auto const scrolls = keys.height() > mostHeight;
    area->setFocusPolicy(scrolls ? Qt::TabFocus : Qt::NoFocus);
    area->setFixedSize(keys.width() + (scrolls ? area->verticalScrollBar()->sizeHint().width() : 0),
                       std::min(keys.height(), mostHeight));
    all->insertWidget(1, area);
    start->setFocus();
}

WelcomeWindow *WelcomeWindow::showIfFirstRun(Defaults &defaults, QWidget &mainWindow)
{
    if (Settings::welcomeShown.read(defaults))
        return nullptr;
    Settings::welcomeShown.write(defaults, true);
    defaults.flush();
    auto *const shown = new WelcomeWindow(&mainWindow);
    shown->setAttribute(Qt::WA_DeleteOnClose);
    shown->show();
    shown->activateWindow();
    return shown;
}

} // namespace tw
