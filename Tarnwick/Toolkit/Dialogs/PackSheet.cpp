#include "Tarnwick/Toolkit/Dialogs/PackSheet.h"

#include "TWCore/Model/Trimmed.h"
#include "Tarnwick/Toolkit/Appearance/FieldText.h"
#include "Tarnwick/Toolkit/Appearance/Wording.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

namespace tw {

PackSheet::PackSheet(Dialogs::PackPrompt const &question, QWidget *window)
    : Sheet(Wording::shown(question.title), Wording::shown(question.message), window),
      offered(question.formats),
      line(new QLineEdit(this)),
      formats(new QComboBox(this))
{
    for (auto const format : offered)
        formats->addItem(QString::fromUtf8(displayName(format)));
    auto const first = PackTarget::suggested(question.directory, question.stem, chosen());
    line->setText(FieldText::ofBytes(first));
    line->setAccessibleName(Wording::shown("Archive"));
    addContent(line);
    auto *const row = new QWidget(this);
    auto *const layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    auto *const label = new QLabel(Wording::shown("Format:"), row);
    label->setBuddy(formats);
    layout->addWidget(label);
    layout->addWidget(formats);
    layout->addStretch();
    addContent(row);
    auto *const ok = buttons().addButton(Wording::shown("Pack"), QDialogButtonBox::AcceptRole);
    ok->setDefault(true);
    buttons().addButton(Wording::shown("Cancel"), QDialogButtonBox::RejectRole);
    connect(formats, &QComboBox::activated, this, [this] {
        line->setText(FieldText::ofBytes(PackTarget::withFormat(FieldText::bytesOf(line->text()), chosen())));
    });
    // The name without its extension is what is most often changed.
    auto const nameBegins = line->text().lastIndexOf(u'/') + 1;
    auto const stem = FieldText::ofBytes(question.stem);
    line->setSelection(static_cast<int>(nameBegins), static_cast<int>(stem.size()));
    line->setFocus();
}

ArchiveFormat PackSheet::chosen() const
{
    return offered[static_cast<std::size_t>(formats->currentIndex())];
}

std::optional<PackTarget> PackSheet::target() const
{
    auto const text = FieldText::bytesOf(line->text());
    auto const path = trimmed(text);
    if (path.empty())
        return std::nullopt;
    return PackTarget::of(path, offered, chosen());
}

} // namespace tw
