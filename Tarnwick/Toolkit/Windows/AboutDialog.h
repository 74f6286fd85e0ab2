#pragma once

#include <QDialog>

namespace tw {

/// What the program is, and who makes it.
class AboutDialog final : public QDialog {
public:
    AboutDialog(QString const &version, QWidget *parent);

    /// What stands below the name and the version, as rich text.
    static QString credits();
};

} // namespace tw
