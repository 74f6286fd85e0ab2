#pragma once

#include "Tarnwick/Operations/Dialogs.h"
#include "Tarnwick/Toolkit/Dialogs/Sheet.h"

class QComboBox;
class QLineEdit;

namespace tw {

/// Asks for the path and the format of an archive.
class PackSheet final : public Sheet {
public:
    PackSheet(Dialogs::PackPrompt const &question, QWidget *window);

    /// Nothing without a path.
    std::optional<PackTarget> target() const;

    QLineEdit &field() const { return *line; }

    QComboBox &formatMenu() const { return *formats; }

private:
    ArchiveFormat chosen() const;

    std::vector<ArchiveFormat> const offered;
    QLineEdit *const line;
    QComboBox *const formats;
};

} // namespace tw
