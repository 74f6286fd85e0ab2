#include "Tarnwick/Toolkit/Viewer/ViewerWindow.h"

#include "TWCore/Model/DisplayText.h"
#include "Tarnwick/Settings/Settings.h"
#include "Tarnwick/Toolkit/Appearance/Wording.h"
#include "Tarnwick/Toolkit/Commands/KeyStrokes.h"
#include "Tarnwick/Toolkit/Viewer/ViewerAskBar.h"
#include "Tarnwick/Toolkit/Viewer/ViewerImageView.h"
#include "Tarnwick/Toolkit/Viewer/ViewerTextView.h"
#include "Tarnwick/Toolkit/Widgets/BusySpinner.h"
#include "Tarnwick/Toolkit/Widgets/ElidedLabel.h"

#include <QApplication>
#include <QButtonGroup>
#include <QClipboard>
#include <QComboBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLineEdit>
#include <QScreen>
#include <QStackedWidget>
#include <QToolButton>

namespace tw {

namespace {

constexpr QSize usualViewerSize(900, 640);
constexpr int gapInBar = 4;

/// What a window manager puts around a window, at most. It is known only when the window is on screen.
constexpr QSize roomForViewerFrame(16, 48);

/// Of the keys of a viewer, in a tool tip.
QString keysOf(ViewerAction action)
{
    for (auto const &key : viewerKeys()) {
        if (key.action != action)
            continue;
        auto const keys = QString::fromUtf8(key.chords.data(), static_cast<qsizetype>(key.chords.size()));
        return Wording::shown(key.help) +
               QStringLiteral(" (%1)").arg(keys.split(QLatin1Char(' ')).join(QStringLiteral(", ")));
    }
    return {};
}

} // namespace

ViewerWindow::ViewerWindow(std::shared_ptr<ViewerController> controller, Defaults &defaults)
    : viewer(std::move(controller)),
      settings(defaults),
      modes(new QButtonGroup(this)),
      body(new QStackedWidget(this)),
      rows(new ViewerTextView(body)),
      picture(new ViewerImageView(body)),
      bar(new ViewerAskBar(this)),
      status(new ElidedLabel(this))
{
    setAttribute(Qt::WA_DeleteOnClose);
    auto *const column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(buildBar());
    body->addWidget(rows);
    body->addWidget(picture);
    column->addWidget(body, 1);
    column->addWidget(bar);
    column->addWidget(status);
    nameFile();
    buildAskBar();
    connectText();
    place();
    rows->setTextSize(Settings::viewerFontSize.read(settings));
    rows->setFocus();
    viewer->attach(*this);
    viewer->start();
}

ViewerWindow::~ViewerWindow()
{
    viewer->detach();
}

QLineEdit &ViewerWindow::askField() const
{
    return bar->field();
}

void ViewerWindow::nameFile()
{
    auto const &subject = viewer->subject();
    setWindowTitle(QString::fromStdString(onOneLine(subject.label) + " — " + onOneLine(subject.name())));
    rows->setAccessibleName(windowTitle());
}

/// Where the last viewer was, as far as that is on the screen.
void ViewerWindow::place()
{
    resize(usualViewerSize);
    auto const stored = QByteArray::fromStdString(Settings::viewerGeometry.read(settings));
    auto const isRestored = restoreGeometry(QByteArray::fromBase64(stored));
    if (isMaximized() || isFullScreen())
        return;
    auto const free = screen()->availableGeometry();
    resize(size().boundedTo(free.size() - roomForViewerFrame));
    if (!isRestored)
        return;
    QRect whole(pos(), size() + roomForViewerFrame);
    whole.moveRight(std::min(whole.right(), free.right()));
    whole.moveBottom(std::min(whole.bottom(), free.bottom()));
    move(std::max(whole.left(), free.left()), std::max(whole.top(), free.top()));
}

QWidget *ViewerWindow::buildBar()
{
    auto *const buttonBar = new QWidget(this);
    auto *const line = new QHBoxLayout(buttonBar);
    line->setContentsMargins(gapInBar, gapInBar, gapInBar, gapInBar);
    line->setSpacing(gapInBar);
    for (auto const &[title, mode, action] : {std::tuple("Text", ViewerMode::text, ViewerAction::showText),
                                              std::tuple("Hex", ViewerMode::hex, ViewerAction::showHex),
                                              std::tuple("Image", ViewerMode::image, ViewerAction::showImage)}) {
        auto *const button = addButton(*buttonBar, title, action);
        button->setCheckable(true);
        modes->addButton(button, static_cast<int>(mode));
    }
    line->addSpacing(2 * gapInBar);
    addButton(*buttonBar, "Start", ViewerAction::start);
    addButton(*buttonBar, "End", ViewerAction::end)->setToolTip(Wording::shown("Jump to the end of the file"));
    addButton(*buttonBar, "Go To…", ViewerAction::goTo);
    addButton(*buttonBar, "Find…", ViewerAction::find);
    line->addSpacing(2 * gapInBar);
    wrap = addButton(*buttonBar, "Wrap", ViewerAction::toggleWrap);
    wrap->setCheckable(true);
    follow = addButton(*buttonBar, "Follow", ViewerAction::follow);
    follow->setCheckable(true);
    buildEncodings(*buttonBar);
    line->addStretch(1);
    spinner = new BusySpinner(buttonBar);
    line->addWidget(spinner);
    return buttonBar;
}

QToolButton *ViewerWindow::addButton(QWidget &within, char const *title, ViewerAction action)
{
    auto *const button = new QToolButton(&within);
    button->setText(Wording::shown(title));
    button->setToolTip(keysOf(action));
    button->setAutoRaise(true);
    button->setFocusPolicy(Qt::TabFocus);
    connect(button, &QToolButton::clicked, this, [this, action] { perform(action); });
    within.layout()->addWidget(button);
    buttons.emplace(action, button);
    return button;
}

void ViewerWindow::buildEncodings(QWidget &within)
{
    encodings = new QComboBox(&within);
    encodings->setToolTip(keysOf(ViewerAction::nextEncoding));
    encodings->setAccessibleName(Wording::shown("Encoding"));
    encodings->setFocusPolicy(Qt::TabFocus);
    for (auto const each : TextDecoding::encodings) {
        auto const name = TextDecoding::nameOf(each);
        encodings->addItem(QString::fromLatin1(name.data(), static_cast<qsizetype>(name.size())));
    }
    connect(encodings, &QComboBox::activated, this, [this](int index) {
        viewer->readAs(TextDecoding::encodings.at(static_cast<std::size_t>(index)));
        rows->setFocus();
    });
    within.layout()->addWidget(encodings);
}

void ViewerWindow::buildAskBar()
{
    bar->onFind = [this](SearchWish const &wish) {
        if (wish.typed.empty()) {
            beep();
            return false;
        }
        viewer->find(wish);
        return true;
    };
    bar->onGoTo = [this](std::string const &typed) {
        auto const where = ViewerTarget::parse(typed, rows->screen().mode);
        if (where)
            viewer->goTo(*where);
        else
            beep();
        return where.has_value();
    };
    bar->onClosed = [this] { rows->setFocus(); };
}

void ViewerWindow::connectText()
{
    rows->onResized = [this](int count, int columns) { viewer->resize(count, columns); };
    rows->onRows = [this](int count) { viewer->scrollRows(count); };
    rows->onColumns = [this](int count) { viewer->scrollColumns(count); };
    rows->onShare = [this](double share) { viewer->scrollTo(share); };
    picture->onEnlarged = [this] { viewer->refineImage(); };
    rows->onSelected = [this](ViewerPlace from, ViewerPlace to) { viewer->select(from, to); };
}

/// The viewer may be another one afterwards.
void ViewerWindow::perform(ViewerAction action)
{
    auto const held = viewer;
    held->perform(action);
}

void ViewerWindow::keyPressEvent(QKeyEvent *event)
{
    if (auto const action = viewerActionOf(keyStrokeOf(*event)))
        return perform(*action);
    QWidget::keyPressEvent(event);
}

void ViewerWindow::reportVisibility()
{
    viewer->setOnScreen(isVisible() && !isMinimized());
}

void ViewerWindow::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    reportVisibility();
}

void ViewerWindow::hideEvent(QHideEvent *event)
{
    QWidget::hideEvent(event);
    reportVisibility();
}

void ViewerWindow::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::WindowStateChange)
        reportVisibility();
}

void ViewerWindow::closeEvent(QCloseEvent *event)
{
    Settings::viewerGeometry.write(settings, saveGeometry().toBase64().toStdString());
    QWidget::closeEvent(event);
}

void ViewerWindow::show(ViewerScreen const &screen)
{
    modes->button(static_cast<int>(screen.mode))->setChecked(true);
    auto const isText = screen.mode == ViewerMode::text;
    wrap->setChecked(screen.wraps);
    wrap->setEnabled(isText);
    follow->setChecked(screen.isFollowed);
    encodings->setEnabled(isText);
    encodings->setCurrentIndex(static_cast<int>(screen.encoding));
    if (screen.isBusy != spinner->isSpinning())
        screen.isBusy ? spinner->start() : spinner->stop();
    status->setText(Wording::shown(screen.status));
    rows->show(screen);
    picture->show(screen.picture);
    auto const isImage = screen.mode == ViewerMode::image;
    for (auto const action :
         {ViewerAction::start, ViewerAction::end, ViewerAction::goTo, ViewerAction::find, ViewerAction::follow})
        buttons.at(action)->setEnabled(!isImage);
    auto *const shown = isImage ? static_cast<QWidget *>(picture) : rows;
    if (body->currentWidget() == shown)
        return;
    body->setCurrentWidget(shown);
    isImage ? setFocus() : rows->setFocus();
}

/// The keys of a text, for a picture.
void ViewerWindow::performOnImage(ViewerAction action)
{
    constexpr double zoom = 1.25;
    constexpr double step = 0.1;
    switch (action) {
    case ViewerAction::bigger:
        return picture->zoomBy(zoom);
    case ViewerAction::smaller:
        return picture->zoomBy(1 / zoom);
    case ViewerAction::usualSize:
        return picture->fit();
    case ViewerAction::actualSize:
        return picture->zoomTo(1);
    case ViewerAction::lineDown:
        return picture->scrollBy(0, step);
    case ViewerAction::lineUp:
        return picture->scrollBy(0, -step);
    case ViewerAction::pageDown:
        return picture->scrollBy(0, 1);
    case ViewerAction::pageUp:
        return picture->scrollBy(0, -1);
    case ViewerAction::right:
        return picture->scrollBy(step, 0);
    case ViewerAction::left:
        return picture->scrollBy(-step, 0);
    case ViewerAction::findNext:
        return showNeighbour(Neighbour::next);
    case ViewerAction::findPrevious:
    case ViewerAction::previousFile:
        return showNeighbour(Neighbour::previous);
    default:
        return;
    }
}

void ViewerWindow::showNeighbour(Neighbour which)
{
    auto const &find = viewer->subject().neighbour;
    auto next = find ? find(which) : std::nullopt;
    if (!next)
        return beep();
    viewer->detach();
    viewer = std::make_shared<ViewerController>(viewer->context(), *std::move(next));
    nameFile();
    viewer->attach(*this);
    viewer->resize(rows->rowCount(), rows->columnCount());
    viewer->start();
}

void ViewerWindow::performInWindow(ViewerAction action)
{
    if (action != ViewerAction::close && body->currentWidget() == picture)
        return performOnImage(action);
    auto const size = Settings::viewerFontSize.read(settings);
    switch (action) {
    case ViewerAction::close:
        close();
        return;
    case ViewerAction::goTo:
    case ViewerAction::find:
        return bar->ask(action);
    case ViewerAction::bigger:
        return setTextSize(size + 1);
    case ViewerAction::smaller:
        return setTextSize(size - 1);
    case ViewerAction::usualSize:
        return setTextSize(Settings::viewerFontSize.usual);
    default:
        return;
    }
}

void ViewerWindow::setTextSize(double size)
{
    Settings::viewerFontSize.write(settings, size);
    rows->setTextSize(Settings::viewerFontSize.read(settings));
}

void ViewerWindow::copyText(std::u32string const &text)
{
    QApplication::clipboard()->setText(QString::fromUcs4(text.data(), static_cast<qsizetype>(text.size())));
}

void ViewerWindow::beep()
{
    QApplication::beep();
    status->flash();
}

} // namespace tw
