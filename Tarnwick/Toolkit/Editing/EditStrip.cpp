#include "Tarnwick/Toolkit/Editing/EditStrip.h"

#include "TWCore/Model/DisplayText.h"
#include "Tarnwick/Toolkit/Appearance/Wording.h"

#include <QCloseEvent>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QVBoxLayout>

#include <algorithm>
#include <set>
#include <utility>

namespace tw {

namespace {

constexpr int margin = 8;
constexpr QSize usualSize(430, 104);

/// The strip scrolls beyond this, to leave room for the panes, or for the editor.
constexpr int mostLines = 3;

} // namespace

EditStrip::Place EditStrip::usualPlace()
{
    return QGuiApplication::platformName() == QLatin1String("xcb") ? Place::ownWindow : Place::mainWindow;
}

EditStrip::EditStrip(std::shared_ptr<EditSessions> edits, Place where, QWidget *parent)
    : QWidget(where == Place::ownWindow ? nullptr : parent),
      sessions(std::move(edits)),
      place(where),
      area(new QScrollArea(this)),
      keyboard(new ButtonLines(*this, [this] { return buttons(); }))
{
    keyboard->onChosen = [this](QPushButton &button) { area->ensureWidgetVisible(&button); };
    keyboard->onLeave = [this] {
        if (onLeave)
            onLeave();
    };
    if (place == Place::ownWindow) {
        setWindowFlags(Qt::Tool | Qt::WindowStaysOnTopHint);
        setAttribute(Qt::WA_ShowWithoutActivating);
        resize(usualSize);
    }
    auto *const content = new QWidget(area);
    column = new QVBoxLayout(content);
    column->setContentsMargins(margin, margin / 2, margin, margin / 2);
    area->setWidget(content);
    area->setWidgetResizable(true);
    area->setFrameShape(QFrame::NoFrame);
    area->setFocusPolicy(Qt::NoFocus); // Tab goes from button to button
    area->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    auto *const all = new QVBoxLayout(this);
    all->setContentsMargins(0, 0, 0, 0);
    all->addWidget(area);
    hide();
    sessions->onChanged = [this] { sync(); };
    sync();
}

EditStrip::~EditStrip()
{
    sessions->onChanged = nullptr;
}

/// The host is in the title of a window, if there is one host.
EditLine::Path EditStrip::pathToShow() const
{
    auto const &all = sessions->all();
    auto const isOneHost = std::ranges::all_of(
        all, [&](auto const &each) { return each->state().connection == all.front()->state().connection; });
    return isWindow() && isOneHost ? EditLine::Path::alone : EditLine::Path::ofHost;
}

void EditStrip::nameWindow()
{
    std::set<std::string> hosts;
    for (auto const &session : sessions->all())
        hosts.insert(session->state().connection);
    std::string names;
    for (auto const &host : hosts)
        names += (names.empty() ? "" : ", ") + host;
    setWindowTitle(Wording::shown(Text("Editing on %@", {names})));
}

void EditStrip::sync()
{
    auto const path = pathToShow();
    auto old = std::exchange(lines, {});
    auto const *const focused = window()->focusWidget();
    auto const hadKeyboard = focused && isAncestorOf(focused);
    for (auto const &session : sessions->all()) {
        auto const known = std::ranges::find(old, session, &EditLine::session);
        auto *const line = known == old.end() ? new EditLine(session, this) : *known;
        if (known != old.end())
            old.erase(known);
        else {
            column->addWidget(line);
            keyboard->watch(line->buttons());
        }
        line->refresh(path);
        line->show();
        lines.push_back(line);
    }
    for (auto *const line : old) {
        line->hide();
        line->deleteLater(); // its button may be the one that was just pressed
    }
    nameWindow();
    fit();
    setVisible(!lines.empty());
    if (hadKeyboard && lines.empty() && onLeave)
        onLeave();
}

/// As high as its lines, up to `mostLines` of them.
void EditStrip::fit()
{
    auto height = 0;
    for (std::size_t index = 0; index < lines.size() && index < mostLines; ++index)
        height += lines[index]->sizeHint().height() + column->spacing();
    height += margin;
    if (place == Place::mainWindow)
        setFixedHeight(height);
    else
        setFixedHeight(std::max(height, usualSize.height()));
}

bool EditStrip::takeKeyboard()
{
    if (place == Place::ownWindow && !lines.empty())
        activateWindow();
    return keyboard->takeKeyboard();
}

std::vector<ButtonLines::Line> EditStrip::buttons() const
{
    std::vector<ButtonLines::Line> all;
    for (auto const *const line : lines)
        all.emplace_back(line->buttons().begin(), line->buttons().end());
    return all;
}

/// The window closes with its last session, and each session may have a question first.
void EditStrip::closeEvent(QCloseEvent *event)
{
    if (lines.empty() || mayClose)
        return QWidget::closeEvent(event);
    event->ignore();
    for (auto const &session : std::vector(sessions->all()))
        session->done();
}

void EditStrip::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape && onLeave)
        return onLeave();
    QWidget::keyPressEvent(event);
}

} // namespace tw
