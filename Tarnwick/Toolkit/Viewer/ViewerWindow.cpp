#include "Tarnwick/Toolkit/Viewer/ViewerWindow.h"

#include "TWCore/Model/DisplayText.h"
#include "Tarnwick/Settings/Settings.h"
#include "Tarnwick/Toolkit/Appearance/Wording.h"
#include "Tarnwick/Toolkit/Commands/KeyStrokes.h"
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
#include <QStackedWidget>
#include <QToolButton>

namespace tw {

namespace {

constexpr QSize usualViewerSize(900, 640);
constexpr int gapInBar = 4;

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
      field(new QLineEdit(this)),
      status(new ElidedLabel(this))
{
    setAttribute(Qt::WA_DeleteOnClose);
    auto const &subject = viewer->subject();
    setWindowTitle(QString::fromStdString(onOneLine(subject.label) + " — " + onOneLine(subject.name())));
    auto *const column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(buildBar());
    body->addWidget(rows);
    body->addWidget(picture);
    column->addWidget(body, 1);
    column->addWidget(field);
    column->addWidget(status);
    rows->setAccessibleName(windowTitle());
    buildField();
    connectText();
    resize(usualViewerSize);
    restoreGeometry(QByteArray::fromBase64(QByteArray::fromStdString(Settings::viewerGeometry.read(settings))));
    rows->setTextSize(Settings::viewerFontSize.read(settings));
    rows->setFocus();
    viewer->attach(*this);
    viewer->start();
}

ViewerWindow::~ViewerWindow()
{
    viewer->detach();
}

QWidget *ViewerWindow::buildBar()
{
    auto *const bar = new QWidget(this);
    auto *const line = new QHBoxLayout(bar);
    line->setContentsMargins(gapInBar, gapInBar, gapInBar, gapInBar);
    line->setSpacing(gapInBar);
    for (auto const &[title, mode, action] : {std::tuple("Text", ViewerMode::text, ViewerAction::showText),
                                              std::tuple("Hex", ViewerMode::hex, ViewerAction::showHex),
                                              std::tuple("Image", ViewerMode::image, ViewerAction::showImage)}) {
        auto *const button = addButton(*bar, title, action);
        button->setCheckable(true);
        modes->addButton(button, static_cast<int>(mode));
    }
    line->addSpacing(2 * gapInBar);
    addButton(*bar, "Start", ViewerAction::start);
    addButton(*bar, "End", ViewerAction::end)->setToolTip(Wording::shown("Jump to the end of the file"));
    addButton(*bar, "Go To…", ViewerAction::goTo);
    addButton(*bar, "Find…", ViewerAction::find);
    line->addSpacing(2 * gapInBar);
    wrap = addButton(*bar, "Wrap", ViewerAction::toggleWrap);
    wrap->setCheckable(true);
    buildEncodings(*bar);
    line->addStretch(1);
    spinner = new BusySpinner(bar);
    line->addWidget(spinner);
    return bar;
}

QToolButton *ViewerWindow::addButton(QWidget &bar, char const *title, ViewerAction action)
{
    auto *const button = new QToolButton(&bar);
    button->setText(Wording::shown(title));
    button->setToolTip(keysOf(action));
    button->setAutoRaise(true);
    button->setFocusPolicy(Qt::TabFocus);
    connect(button, &QToolButton::clicked, this, [this, action] { viewer->perform(action); });
    bar.layout()->addWidget(button);
    buttons.emplace(action, button);
    return button;
}

void ViewerWindow::buildEncodings(QWidget &bar)
{
    encodings = new QComboBox(&bar);
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
    bar.layout()->addWidget(encodings);
}

void ViewerWindow::buildField()
{
    field->installEventFilter(this);
    field->hide();
}

void ViewerWindow::connectText()
{
    rows->onResized = [this](int count, int columns) { viewer->resize(count, columns); };
    rows->onRows = [this](int count) { viewer->scrollRows(count); };
    rows->onColumns = [this](int count) { viewer->scrollColumns(count); };
    rows->onShare = [this](double share) { viewer->scrollTo(share); };
    rows->onSelected = [this](ViewerPlace from, ViewerPlace to) { viewer->select(from, to); };
}

void ViewerWindow::keyPressEvent(QKeyEvent *event)
{
    if (auto const action = viewerActionOf(keyStrokeOf(*event)))
        return viewer->perform(*action);
    QWidget::keyPressEvent(event);
}

/// Escape leaves the field, and only then the window. What the field leaves over would be a key of the viewer.
bool ViewerWindow::eventFilter(QObject *watched, QEvent *event)
{
    if (watched != field || event->type() != QEvent::KeyPress)
        return QWidget::eventFilter(watched, event);
    switch (static_cast<QKeyEvent const *>(event)->key()) {
    case Qt::Key_Escape:
        closeField();
        return true;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        answered();
        return true;
    default:
        return false;
    }
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
    encodings->setEnabled(isText);
    encodings->setCurrentIndex(static_cast<int>(screen.encoding));
    if (screen.isBusy != spinner->isSpinning())
        screen.isBusy ? spinner->start() : spinner->stop();
    status->setText(Wording::shown(screen.status));
    rows->show(screen);
    picture->show(screen.picture);
    auto const isImage = screen.mode == ViewerMode::image;
    for (auto const action : {ViewerAction::start, ViewerAction::end, ViewerAction::goTo, ViewerAction::find})
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
        return picture->zoomBy(1 / picture->scale());
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
    default:
        return;
    }
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
        return ask(action);
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

void ViewerWindow::ask(ViewerAction what)
{
    if (asked != what)
        field->clear();
    asked = what;
    auto const words = Wording::shown(what == ViewerAction::find ? "Find…" : "Go To…");
    field->setPlaceholderText(what == ViewerAction::find
                                  ? Wording::shown("find a text; in a hex dump also bytes, as 48 65")
                                  : Wording::shown("a line, 50%, or an offset: 0x1F0, @1000, 12M"));
    field->setAccessibleName(words);
    field->show();
    field->selectAll();
    field->setFocus();
}

void ViewerWindow::answered()
{
    auto const typed = field->text().toStdString();
    auto const where = ViewerTarget::parse(typed, rows->screen().mode);
    if (typed.empty() || (asked == ViewerAction::goTo && !where))
        return beep();
    closeField();
    if (asked == ViewerAction::find)
        viewer->find(typed);
    else
        viewer->goTo(*where);
}

void ViewerWindow::closeField()
{
    field->hide();
    rows->setFocus();
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
