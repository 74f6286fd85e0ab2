#include "Tarnwick/Toolkit/Table/ColumnsDialog.h"

#include "Tarnwick/Toolkit/Appearance/Wording.h"

#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

namespace tw {

namespace {

PaneColumn columnOf(QListWidgetItem const &item)
{
    return static_cast<PaneColumn>(item.data(Qt::UserRole).toInt());
}

} // namespace

ColumnsDialog::ColumnsDialog(std::string_view choices, QWidget *window)
    : QDialog(window),
      list(new QListWidget(this)),
      up(new QPushButton(Wording::shown("Move &Up"), this)),
      down(new QPushButton(Wording::shown("Move &Down"), this))
{
    setWindowTitle(Wording::shown("Customize Columns"));
    setWindowModality(Qt::WindowModal);
    list->setDragDropMode(QAbstractItemView::InternalMove);
    list->setAccessibleName(Wording::shown("Columns"));
    layOut();
    layout.adopt(choices);
    showLayout();
    connect(up, &QPushButton::clicked, this, [this] { moveCurrent(-1); });
    connect(down, &QPushButton::clicked, this, [this] { moveCurrent(1); });
    connect(list, &QListWidget::currentRowChanged, this, [this] { enableButtons(); });
    connect(this, &QDialog::accepted, this, [this] {
        if (onAccepted)
            onAccepted(ColumnsDialog::choices());
    });
}

void ColumnsDialog::layOut()
{
    auto *const label = new QLabel(Wording::shown("&Columns behind the name:"), this);
    label->setBuddy(list);
    auto *const buttons = new QVBoxLayout;
    for (auto *const each : {up, down}) {
        each->setAutoDefault(false);
        buttons->addWidget(each);
    }
    buttons->addStretch();
    auto *const middle = new QHBoxLayout;
    middle->addWidget(list);
    middle->addLayout(buttons);
    auto *const answers =
        new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel | QDialogButtonBox::RestoreDefaults, this);
    connect(answers, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(answers, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(answers->button(QDialogButtonBox::RestoreDefaults), &QPushButton::clicked, this, [this] { showUsual(); });
    auto *const all = new QVBoxLayout(this);
    all->addWidget(label);
    all->addLayout(middle);
    all->addWidget(answers);
}

void ColumnsDialog::showUsual()
{
    layout.adopt({});
    showLayout();
}

void ColumnsDialog::showLayout()
{
    list->clear();
    for (auto const column : layout.order()) {
        if (!ColumnLayout::canBeHidden(column))
            continue;
        auto *const item = new QListWidgetItem(Wording::shown(paneColumnTitle(column)), list);
        item->setData(Qt::UserRole, static_cast<int>(column));
        item->setFlags(Qt::ItemIsSelectable | Qt::ItemIsEnabled | Qt::ItemIsUserCheckable | Qt::ItemIsDragEnabled);
        item->setCheckState(layout.isWanted(column) ? Qt::Checked : Qt::Unchecked);
    }
    list->setCurrentRow(0);
    enableButtons();
}

std::string ColumnsDialog::choices() const
{
    auto chosen = layout;
    std::vector<PaneColumn> order;
    for (int row = 0; row < list->count(); ++row) {
        auto const &item = *list->item(row);
        order.push_back(columnOf(item));
        chosen.want(columnOf(item), item.checkState() == Qt::Checked);
    }
    chosen.arrange(order);
    return chosen.text();
}

void ColumnsDialog::moveCurrent(int by)
{
    auto const from = list->currentRow();
    auto const to = from + by;
    if (from < 0 || to < 0 || to >= list->count())
        return;
    list->insertItem(to, list->takeItem(from));
    list->setCurrentRow(to);
}

void ColumnsDialog::enableButtons()
{
    auto const row = list->currentRow();
    up->setEnabled(row > 0);
    down->setEnabled(row >= 0 && row + 1 < list->count());
}

} // namespace tw
