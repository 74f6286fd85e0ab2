#include "Tarnwick/Toolkit/Windows/PaneView.h"

#include "TWCore/Model/DisplayText.h"
#include "Tarnwick/Settings/Settings.h"
#include "Tarnwick/Toolkit/Appearance/Wording.h"
#include "Tarnwick/Toolkit/Diagnostics/StartLog.h"
#include "Tarnwick/Toolkit/Notices/NoticeStrip.h"
#include "Tarnwick/Toolkit/Table/PaneTableView.h"
#include "Tarnwick/Toolkit/Widgets/BusySpinner.h"
#include "Tarnwick/Toolkit/Widgets/ElidedLabel.h"
#include "Tarnwick/Toolkit/Widgets/PathField.h"
#include "Tarnwick/Toolkit/Windows/ConnectionButton.h"

#include <QApplication>
#include <QInputMethod>
#include <QMouseEvent>
#include <QVBoxLayout>

namespace tw {

namespace {

/// What a long name of a host leaves to the path in a narrow pane.
constexpr int leastPathWidth = 110;

int sectionOf(SortKey key)
{
    for (auto const column : paneColumns) {
        if (sortKeyOf(column) == key)
            return static_cast<int>(column);
    }
    return -1;
}

} // namespace

PaneView::PaneView(std::shared_ptr<PaneController> pane, Defaults &defaults, PaneIcons &icons, QWidget *parent)
    : QWidget(parent),
      controller(std::move(pane)),
      settings(defaults),
      rows(controller->model(), icons),
      connection(new ConnectionButton(this)),
      path(new PathField(this)),
      notices(new NoticeStrip(this)),
      rowTable(new PaneTableView(rows, this)),
      status(new ElidedLabel(this))
{
    layOut();
    connectTable();
    connectPathField();
    connectButton();
    connectNotices();
    watchMouse();
    adoptFontSize();
    adoptColumns();
    observations = {Settings::paneFontSize.observe(settings, [this] { adoptFontSize(); }),
                    Settings::columns.observe(settings, [this] { adoptColumns(); })};
    controller->attach(*this);
}

PaneView::~PaneView()
{
    controller->endRename(PaneController::NameEnd::cancelled); // the window is half gone, and asks no more questions
    controller->detach(*this);
    delete rowTable; // before the rows that it shows
}

void PaneView::showPane(std::shared_ptr<PaneController> pane)
{
    if (pane == controller)
        return;
    controller->detach(*this);
    // The model knows the rows of the pane before until it shows others.
    auto const before = std::exchange(controller, std::move(pane));
    rows.show(controller->model());
    paintedPath.clear();
    controller->attach(*this);
}

void PaneView::layOut()
{
    auto *const all = new QVBoxLayout(this);
    all->setContentsMargins(0, 0, 0, 0);
    all->setSpacing(0);
    auto *const strip = new QHBoxLayout;
    strip->setSpacing(0);
    strip->addWidget(connection);
    strip->addWidget(path, 1);
    path->setMinimumWidth(leastPathWidth);
    all->addLayout(strip);
    all->addWidget(notices);
    notices->hide();
    all->addWidget(rowTable);
    all->addWidget(status);
}

void PaneView::connectTable()
{
    rowTable->onKey = [this](KeyPress const &key) { return controller->handleKey(key); };
    rowTable->onTextTyped = [this](std::string const &text) { controller->textTyped(text); };
    rowTable->onTextComposed = [this](std::string const &text) { controller->textComposed(text); };
    rowTable->onRowClicked = [this](int row, ClickModifiers held) { controller->rowClicked(row, held); };
    rowTable->onRowDoubleClicked = [this](int row) { controller->rowDoubleClicked(row); };
    rowTable->onDragWanted = [this] {
        if (onDragWanted)
            onDragWanted();
    };
    rowTable->onNameClickedAgain = [this](int row) {
        controller->scheduleRename(row, std::chrono::milliseconds(QApplication::doubleClickInterval()));
    };
    rowTable->onNameConfirmed = [this] { controller->confirmName(); };
    rowTable->onNameCancelled = [this] { controller->endRename(PaneController::NameEnd::cancelled); };
    rowTable->onNameLeft = [this] { controller->endRename(PaneController::NameEnd::committed); };
    rowTable->onEntered = [this] { controller->activated(); };
    rowTable->onPainted = [this] { notePainted(); };
    rowTable->titles().onTitleClicked = [this](PaneColumn column) {
        if (auto const key = sortKeyOf(column))
            controller->toggleSort(*key);
        else // the header has turned its arrow to a column that does not sort
            PaneView::showSortIndicator(controller->model().viewOptions().sortKey,
                                        controller->model().viewOptions().ascending);
    };
    rowTable->titles().onChoicesChanged = [this] { Settings::columns.write(settings, rowTable->titles().choices()); };
}

void PaneView::connectPathField()
{
    path->onEntered = [this] { controller->activated(); };
    path->onLeave = [this] { PaneView::takeKeyboardFocus(); };
    path->onConfirmed = [this] { controller->navigate(controller->requestedPath()); };
    path->onPartClicked = [this](int components) {
        PaneView::takeKeyboardFocus();
        controller->goToPart(components);
    };
    path->onCompletionWanted = [this](std::string const &text) { controller->completePath(text); };
    path->onTyped = [this](std::string const &text) { controller->goToTyped(text); };
}

void PaneView::connectButton()
{
    connection->onMenuWanted = [this] { controller->connectionMenuWanted(); };
    connection->onPicked = [this](ConnectionItem const &item) {
        if (item.kind == ConnectionItem::Kind::host)
            Settings::noteRecentHost(settings, item.host);
        controller->connectionPicked(item);
    };
}

void PaneView::connectNotices()
{
    notices->onKeyboard = [this](NoticeStrip::Keyboard keyboard) {
        auto const isInStrip = keyboard == NoticeStrip::Keyboard::come;
        if (isInStrip)
            controller->activated();
        rowTable->showActive(isActive && !isInStrip); // the row under the cursor is not what Return opens
    };
    notices->onAction = [this](PaneNotice::Action action) { actOnNotice(action); };
    notices->onKey = [this](KeyPress const &key) {
        auto const isUsed = controller->handleKey(key);
        if (isUsed && notices->hasKeyboard())
            PaneView::takeKeyboardFocus();
        return isUsed;
    };
}

/// The buttons for back and forward work all over the pane, whatever its parts do with the mouse.
void PaneView::watchMouse()
{
    installEventFilter(this);
    for (auto *const part : findChildren<QWidget *>())
        part->installEventFilter(this);
}

bool PaneView::eventFilter(QObject *watched, QEvent *event)
{
    auto const isPress = event->type() == QEvent::MouseButtonPress || event->type() == QEvent::MouseButtonDblClick;
    return (isPress && goWithMouse(static_cast<QMouseEvent *>(event)->button())) ||
           QWidget::eventFilter(watched, event);
}

bool PaneView::goWithMouse(Qt::MouseButton button)
{
    if (button != Qt::BackButton && button != Qt::ForwardButton)
        return false;
    PaneView::takeKeyboardFocus();
    if (button == Qt::BackButton)
        controller->goBack();
    else
        controller->goForward();
    return true;
}

void PaneView::actOnNotice(PaneNotice::Action action)
{
    using Action = PaneNotice::Action;
    // A sheet gives the keyboard back to where it was. Every other action goes on with the rows.
    auto const opensSheet = action == Action::details || action == Action::showKey;
    if (!opensSheet || !notices->hasKeyboard())
        PaneView::takeKeyboardFocus();
    controller->noticeActionChosen(action);
}

void PaneView::adoptFontSize()
{
    rowTable->setFontSize(Settings::paneFontSize.read(settings));
}

void PaneView::adoptColumns()
{
    rowTable->titles().adoptChoices(Settings::columns.read(settings));
}

void PaneView::notePainted()
{
    if (!StartLog::isOn() || !controller->model().snapshot())
        return;
    auto const onShow = controller->pathOnShow();
    if (onShow == paintedPath)
        return;
    paintedPath = onShow;
    StartLog::note(QStringLiteral("listing painted ") + QString::fromStdString(onShow));
}

Visibility PaneView::visibility() const
{
    if (!isVisible() || window()->isMinimized())
        return Visibility::hidden;
    auto const isInFront = QGuiApplication::applicationState() == Qt::ApplicationActive;
    return isInFront ? Visibility::lookedAt : Visibility::visible;
}

void PaneView::reloadRows()
{
    rowTable->reloadRows();
    if (onRowsReloaded)
        onRowsReloaded();
}

void PaneView::redrawRows()
{
    rowTable->redrawRows();
}

void PaneView::showCursor(std::optional<int> row)
{
    rowTable->showCursor(row);
}

int PaneView::firstVisibleRow() const
{
    return rowTable->firstVisibleRow();
}

void PaneView::scrollToFirstVisibleRow(int row)
{
    rowTable->scrollToFirstVisibleRow(row);
}

int PaneView::wholeVisibleRows() const
{
    return rowTable->wholeVisibleRows();
}

void PaneView::showConnection(std::string const &name)
{
    connection->showConnection(withNothingHidden(name));
}

void PaneView::openConnectionMenu(std::vector<ConnectionItem> items)
{
    connection->openMenu(lastUsedFirst(std::move(items), Settings::recentHosts.read(settings)));
}

void PaneView::updateConnectionMenu(std::vector<ConnectionItem> items)
{
    connection->updateMenu(lastUsedFirst(std::move(items), Settings::recentHosts.read(settings)));
}

void PaneView::showPath(Text const &shown)
{
    path->showPath(Wording::shown(shown).toStdString());
}

void PaneView::showStatus(Text const &text)
{
    statusText = Wording::shown(text);
    if (dropWords.isEmpty())
        status->setText(statusText);
}

void PaneView::showDropWords(Text const &words)
{
    dropWords = Wording::shown(words);
    status->setText(dropWords.isEmpty() ? statusText : dropWords);
}

void PaneView::editPath()
{
    path->startEditing();
}

void PaneView::returnTyped(std::string const &text)
{
    if (window()->focusWidget() == rowTable)
        path->resumeEditing(text);
}

void PaneView::showCompletion(PathCompletion const &completion)
{
    path->showCompletion(completion);
}

void PaneView::showNotice(std::optional<PaneNotice> const &notice)
{
    // Before the button with the keyboard goes: Qt would give the keyboard to any other widget.
    if (notices->hasKeyboard() && !(notice && notices->hasButtonsOf(*notice)))
        rowTable->setFocus(Qt::OtherFocusReason);
    if (notice)
        notices->showNotice(*notice);
    else
        notices->hide();
}

void PaneView::offerNotice()
{
    // Also while a sheet, or another program, has the keyboard of this window.
    if (window()->focusWidget() == rowTable)
        notices->takeKeyboard();
}

void PaneView::showSpinner(Spinner spinner)
{
    if (spinner == Spinner::spinning)
        path->spinner().start();
    else
        path->spinner().stop();
}

void PaneView::showSortIndicator(SortKey key, bool ascending)
{
    rowTable->titles().setSortIndicator(sectionOf(key), ascending ? Qt::AscendingOrder : Qt::DescendingOrder);
}

void PaneView::showActive(bool active)
{
    isActive = active;
    rowTable->showActive(active);
    path->showActive(active);
    connection->showActive(active);
    status->showActive(active);
}

void PaneView::takeKeyboardFocus()
{
    rowTable->setFocus(Qt::OtherFocusReason);
    // In a window in the background the keyboard comes with the window, but the pane is the active one from now on.
    if (!rowTable->hasFocus())
        controller->activated();
}

void PaneView::showNameField(NameField const &field)
{
    rowTable->showNameField(field);
}

std::string PaneView::textOfNameField() const
{
    return rowTable->textOfNameField();
}

void PaneView::hideNameField()
{
    rowTable->hideNameField();
}

void PaneView::endComposition(Composition how)
{
    if (!rowTable->hasFocus())
        return; // an input method works for what has the keyboard
    auto *const method = QGuiApplication::inputMethod();
    how == Composition::committed ? method->commit() : method->reset();
}

void PaneView::beep()
{
    QApplication::beep();
    status->flash(); // a desktop without a bell, and a person who does not hear it
}

} // namespace tw
