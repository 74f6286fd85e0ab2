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
#include <QVBoxLayout>

namespace tw {

namespace {

constexpr int margin = 32;
constexpr int iconSize = 64;
constexpr int textWidth = 440;

QLabel *plain(QString const &text, QWidget *parent)
{
    auto *const label = new QLabel(text, parent);
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    return label;
}

QGridLayout *keys(QWidget *parent)
{
    auto *const grid = new QGridLayout;
    grid->setHorizontalSpacing(margin / 2);
    grid->setColumnStretch(1, 1);
    for (auto const &command : commandTable()) {
        if (command.firstSteps == FirstSteps::no)
            continue;
        auto const row = grid->rowCount();
        auto *const key = new QLabel(keyTextOf(command), parent);
        auto bold = key->font();
        bold.setWeight(QFont::DemiBold);
        key->setFont(bold);
        grid->addWidget(key, row, 0);
        grid->addWidget(new QLabel(Wording::shown(command.help), parent), row, 1);
    }
    return grid;
}

} // namespace

WelcomeWindow::WelcomeWindow(QWidget *parent) : QDialog(parent)
{
    setWindowTitle(QStringLiteral("Welcome to Tarnwick"));
    auto *const all = new QVBoxLayout(this);
    all->setContentsMargins(margin, margin, margin, margin);
    all->setSpacing(margin / 2);
    all->setSizeConstraint(QLayout::SetFixedSize);

    auto *const icon = new QLabel(this);
    icon->setPixmap(
        QIcon(QStringLiteral(":/icons/tarnwick.svg")).pixmap(QSize(iconSize, iconSize), devicePixelRatioF()));
    all->addWidget(icon);

    auto *const heading = plain(QStringLiteral("Remote folders that behave like local ones"), this);
    auto large = heading->font();
    large.setPointSizeF(QFontInfo(large).pointSizeF() * 1.5);
    large.setWeight(QFont::DemiBold);
    heading->setFont(large);
    heading->setMinimumWidth(textWidth);
    all->addWidget(heading);

    auto *const text = plain(QStringLiteral("Each pane shows a folder of this machine or of a host in ~/.ssh/config. A "
                                            "folder that you have seen opens at once, and is read again behind it. "
                                            "Nothing is installed on a host."),
                             this);
    text->setMinimumWidth(textWidth);
    all->addWidget(text);
    all->addLayout(keys(this));

    auto *const start = new QPushButton(QStringLiteral("Start"), this);
    start->setDefault(true);
    connect(start, &QPushButton::clicked, this, &QDialog::accept);
    all->addWidget(start, 0, Qt::AlignRight);
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
