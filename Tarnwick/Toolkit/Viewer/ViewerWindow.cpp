#include "Tarnwick/Toolkit/Viewer/ViewerWindow.h"

#include "TWCore/Model/DisplayText.h"
#include "Tarnwick/Settings/Settings.h"
#include "Tarnwick/Toolkit/Appearance/Wording.h"
#include "Tarnwick/Toolkit/Commands/KeyStrokes.h"
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
      rows(new ViewerTextView(this)),
      target(new QLineEdit(this)),
      status(new ElidedLabel(this))
{
    setAttribute(Qt::WA_DeleteOnClose);
    auto const &subject = viewer->subject();
    setWindowTitle(QString::fromStdString(onOneLine(subject.label) + " — " + onOneLine(subject.name())));
    auto *const column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(buildBar());
    column->addWidget(rows, 1);
    column->addWidget(target);
    column->addWidget(status);
    rows->setAccessibleName(windowTitle());
    buildTarget();
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
                                              std::tuple("Hex", ViewerMode::hex, ViewerAction::showHex)}) {
        auto *const button = addButton(*bar, title, action);
        button->setCheckable(true);
        modes->addButton(button, static_cast<int>(mode));
    }
    line->addSpacing(2 * gapInBar);
    addButton(*bar, "Start", ViewerAction::start);
    addButton(*bar, "End", ViewerAction::end)->setToolTip(Wording::shown("Jump to the end of the file"));
    addButton(*bar, "Go To…", ViewerAction::goTo);
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
    return button;
}

void ViewerWindow::buildEncodings(QWidget &bar)
{
    encodings = new QComboBox(&bar);
    encodings->setToolTip(keysOf(ViewerAction::nextEncoding));
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

void ViewerWindow::buildTarget()
{
    target->setPlaceholderText(Wording::shown("a line, 50%, or an offset: 0x1F0, @1000, 12M"));
    target->setAccessibleName(Wording::shown("Go To…"));
    target->installEventFilter(this);
    target->hide();
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
    if (watched != target || event->type() != QEvent::KeyPress)
        return QWidget::eventFilter(watched, event);
    switch (static_cast<QKeyEvent const *>(event)->key()) {
    case Qt::Key_Escape:
        closeTarget();
        return true;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        goToTyped();
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
}

void ViewerWindow::performInWindow(ViewerAction action)
{
    auto const size = Settings::viewerFontSize.read(settings);
    switch (action) {
    case ViewerAction::close:
        close();
        return;
    case ViewerAction::goTo:
        target->show();
        target->selectAll();
        target->setFocus();
        return;
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

void ViewerWindow::goToTyped()
{
    auto const where = ViewerTarget::parse(target->text().toStdString(), rows->screen().mode);
    if (!where)
        return beep();
    closeTarget();
    viewer->goTo(*where);
}

void ViewerWindow::closeTarget()
{
    target->hide();
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
