#include "Tarnwick/Toolkit/Commands/ToolBarDialog.h"

#include "Tarnwick/Toolkit/Appearance/SymbolIcons.h"
#include "Tarnwick/Toolkit/Appearance/Wording.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QLabel>
#include <QListWidget>
#include <QPixmap>
#include <QPushButton>
#include <QStyle>
#include <QVBoxLayout>

namespace tw {

namespace {

QListWidget *newList(QWidget *parent, char const *name)
{
    auto *const list = new QListWidget(parent);
    list->setDragDropMode(QAbstractItemView::DragDrop);
    list->setDefaultDropAction(Qt::MoveAction);
    list->setAccessibleName(Wording::shown(name));
    return list;
}

/// Keeps the titles of all items below each other.
QIcon noPicture(int edge)
{
    QPixmap empty(edge, edge);
    empty.fill(Qt::transparent);
    return empty;
}

std::string_view identifierOf(QListWidgetItem const &item)
{
    // What is dropped here may come from anywhere.
    auto const *const known = toolBarItem(item.data(Qt::UserRole).toString().toStdString());
    return known ? known->identifier : std::string_view();
}

} // namespace

ToolBarDialog::ToolBarDialog(ToolBarLayout const &wanted, QWidget *window)
    : QDialog(window),
      left(newList(this, "Available")),
      right(newList(this, "On the toolbar")),
      adding(new QPushButton(Wording::shown("&Add"), this)),
      removing(new QPushButton(Wording::shown("&Remove"), this)),
      up(new QPushButton(Wording::shown("Move &Up"), this)),
      down(new QPushButton(Wording::shown("Move &Down"), this)),
      withLabels(new QCheckBox(Wording::shown("Show &text below the icons"), this))
{
    setWindowTitle(Wording::shown("Customize Toolbar"));
    setWindowModality(Qt::WindowModal);
    layOut();
    showLayout(wanted);
    connectLists();
    left->setCurrentRow(0);
    right->setCurrentRow(0);
    enableButtons();
}

void ToolBarDialog::layOut()
{
    auto *const grid = new QGridLayout;
    for (auto const &[list, title, column] :
         {std::tuple(left, "A&vailable:", 0), std::tuple(right, "On the tool&bar:", 2)}) {
        auto *const label = new QLabel(Wording::shown(title), this);
        label->setBuddy(list);
        grid->addWidget(label, 0, column);
        grid->addWidget(list, 1, column);
    }
    auto *const buttons = new QVBoxLayout;
    buttons->addStretch();
    for (auto *const each : {adding, removing, up, down}) {
        each->setAutoDefault(false);
        buttons->addWidget(each);
    }
    buttons->addStretch();
    grid->addLayout(buttons, 1, 1);

    auto *const answers =
        new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel | QDialogButtonBox::RestoreDefaults, this);
    connect(answers, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(answers, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(this, &QDialog::accepted, this, [this] {
        if (onAccepted)
            onAccepted(layout());
    });
    connect(answers->button(QDialogButtonBox::RestoreDefaults), &QPushButton::clicked, this,
            [this] { showLayout(ToolBarLayout::usual()); });
    auto *const all = new QVBoxLayout(this);
    all->addLayout(grid);
    all->addWidget(withLabels);
    all->addWidget(answers);
}

void ToolBarDialog::connectLists()
{
    connect(adding, &QPushButton::clicked, this, [this] { addCurrent(); });
    connect(removing, &QPushButton::clicked, this, [this] { removeCurrent(); });
    connect(up, &QPushButton::clicked, this, [this] { moveCurrent(-1); });
    connect(down, &QPushButton::clicked, this, [this] { moveCurrent(1); });
    connect(left, &QListWidget::itemDoubleClicked, this, [this] { addCurrent(); });
    connect(right, &QListWidget::itemDoubleClicked, this, [this] { removeCurrent(); });
    for (auto const *const list : {left, right}) {
        connect(list, &QListWidget::currentRowChanged, this, [this] { enableButtons(); });
        // After a drop, in which the item is in both lists for a moment.
        auto const changed = [this] { offerTheRest(); };
        connect(list->model(), &QAbstractItemModel::rowsRemoved, this, changed, Qt::QueuedConnection);
    }
}

QListWidgetItem *ToolBarDialog::itemFor(std::string_view identifier) const
{
    auto const &item = *toolBarItem(identifier);
    auto *const shown = new QListWidgetItem(Wording::shown(item.label));
    shown->setData(Qt::UserRole, QString::fromUtf8(identifier.data(), static_cast<qsizetype>(identifier.size())));
    if (item.command)
        shown->setIcon(SymbolIcons::icon(item.themeIcon, item.ownIcon, palette().color(QPalette::Base)));
    else
        shown->setIcon(noPicture(left->style()->pixelMetric(QStyle::PM_ListViewIconSize, nullptr, left)));
    return shown;
}

void ToolBarDialog::showLayout(ToolBarLayout const &layout)
{
    right->clear();
    for (auto const identifier : layout.items)
        right->addItem(itemFor(identifier));
    withLabels->setChecked(layout.labels == ToolBarLayout::Labels::shown);
    offerTheRest();
}

ToolBarLayout ToolBarDialog::layout() const
{
    ToolBarLayout result;
    result.labels = withLabels->isChecked() ? ToolBarLayout::Labels::shown : ToolBarLayout::Labels::hidden;
    for (int row = 0; row < right->count(); ++row)
        result.items.push_back(identifierOf(*right->item(row)));
    // What cannot stand there is left out, as when it is read from the settings.
    return ToolBarLayout::fromText(result.text()).value_or(ToolBarLayout::usual());
}

void ToolBarDialog::offerTheRest()
{
    auto const row = left->currentRow();
    left->clear();
    for (auto const identifier : layout().available())
        left->addItem(itemFor(identifier));
    left->setCurrentRow(std::clamp(row, 0, left->count() - 1));
    enableButtons();
}

void ToolBarDialog::enableButtons()
{
    auto const row = right->currentRow();
    adding->setEnabled(left->currentItem() && right->count() < static_cast<int>(mostToolBarItems));
    removing->setEnabled(row >= 0);
    up->setEnabled(row > 0);
    down->setEnabled(row >= 0 && row + 1 < right->count());
}

void ToolBarDialog::addCurrent()
{
    if (!left->currentItem())
        return;
    auto const row = right->currentRow() + 1; // behind the current one; at the beginning without one
    right->insertItem(row, itemFor(identifierOf(*left->currentItem())));
    right->setCurrentRow(row);
    offerTheRest();
}

void ToolBarDialog::removeCurrent()
{
    delete right->takeItem(right->currentRow());
    offerTheRest();
}

void ToolBarDialog::moveCurrent(int by)
{
    auto const from = right->currentRow();
    auto const to = from + by;
    if (from < 0 || to < 0 || to >= right->count())
        return;
    right->insertItem(to, right->takeItem(from));
    right->setCurrentRow(to);
}

} // namespace tw
