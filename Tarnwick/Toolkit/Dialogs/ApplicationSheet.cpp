#include "Tarnwick/Toolkit/Dialogs/ApplicationSheet.h"

#include "TWCore/Model/DisplayText.h"
#include "Tarnwick/Toolkit/Appearance/ApplicationIcon.h"
#include "Tarnwick/Toolkit/Appearance/Wording.h"

#include <QCoreApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QStyledItemDelegate>

#include <algorithm>

namespace tw {

namespace {

constexpr int listWidth = 420;
constexpr int mostListHeight = 300;
constexpr int leastListHeight = 100;

/// Of the window, what the sheet needs above and below the list.
constexpr int aroundList = 220;

constexpr int identifierRole = Qt::UserRole;
constexpr int wordsRole = Qt::UserRole + 1; ///< what an application is looked for by

bool goesThroughList(int key)
{
    return key == Qt::Key_Up || key == Qt::Key_Down || key == Qt::Key_PageUp || key == Qt::Key_PageDown;
}

/// Names begin below one another, whatever the width of their icons.
class AlignedNames final : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

protected:
    void initStyleOption(QStyleOptionViewItem *option, QModelIndex const &index) const override
    {
        auto const room = option->decorationSize;
        QStyledItemDelegate::initStyleOption(option, index);
        option->features |= QStyleOptionViewItem::HasDecoration;
        option->decorationSize = room;
    }
};

} // namespace

ApplicationSheet::ApplicationSheet(Dialogs::ApplicationChoice const &question, QWidget *window)
    : Sheet(Wording::shown("Choose an application"), Wording::shown(Text("Open %@ with:", {onOneLine(question.file)})),
            window),
      search(new QLineEdit(this)),
      names(new QListWidget(this))
{
    search->setPlaceholderText(Wording::shown("Search"));
    search->setAccessibleName(Wording::shown("Search"));
    search->installEventFilter(this);
    names->setAccessibleName(Wording::shown("Applications"));
    names->setFocusPolicy(Qt::NoFocus); // the keyboard stays in the field, which has the letters
    names->setFixedHeight(std::clamp(window->height() - aroundList, leastListHeight, mostListHeight));
    names->setMinimumWidth(listWidth);
    names->setItemDelegate(new AlignedNames(names));
    addContent(search);
    addContent(names);
    for (auto const &each : question.suggested)
        add(each);
    for (auto const &each : question.others)
        add(each);
    open = buttons().addButton(Wording::shown("Open"), QDialogButtonBox::AcceptRole);
    buttons().addButton(Wording::shown("Cancel"), QDialogButtonBox::RejectRole);
    open->setDefault(true);
    connect(search, &QLineEdit::textChanged, this, &ApplicationSheet::filter);
    connect(names, &QListWidget::itemDoubleClicked, this, &ApplicationSheet::accept);
    filter({});
    search->setFocus();
}

void ApplicationSheet::add(Application const &application)
{
    auto const name = QString::fromStdString(application.name);
    auto *const item = new QListWidgetItem(applicationIcon(application),
                                           application.isDefault ? name + Wording::shown(" (default)") : name, names);
    item->setData(identifierRole, QByteArray::fromStdString(application.identifier));
    item->setData(wordsRole, name + QLatin1Char(' ') + QString::fromStdString(application.keywords));
}

void ApplicationSheet::filter(QString const &text)
{
    QListWidgetItem *first = nullptr;
    for (int row = 0; row < names->count(); ++row) {
        auto *const item = names->item(row);
        item->setHidden(!item->data(wordsRole).toString().contains(text.trimmed(), Qt::CaseInsensitive));
        if (!first && !item->isHidden())
            first = item;
    }
    names->setCurrentItem(first);
    open->setEnabled(first);
}

std::string ApplicationSheet::chosen() const
{
    auto const *const item = names->currentItem();
    return item && !item->isHidden() ? item->data(identifierRole).toByteArray().toStdString() : std::string();
}

void ApplicationSheet::accept()
{
    if (!chosen().empty())
        Sheet::accept();
}

bool ApplicationSheet::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::KeyPress && goesThroughList(static_cast<QKeyEvent *>(event)->key()))
        return QCoreApplication::sendEvent(names, event);
    return Sheet::eventFilter(watched, event);
}

} // namespace tw
