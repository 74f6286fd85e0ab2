#include "Tarnwick/Toolkit/Appearance/ApplicationIcon.h"

namespace tw {

QIcon applicationIcon(Application const &application)
{
    auto const icon = QString::fromStdString(application.icon);
    auto const usual = QIcon::fromTheme(QStringLiteral("application-x-executable"));
    return icon.startsWith(QLatin1Char('/')) ? QIcon(icon) : QIcon::fromTheme(icon, usual);
}

} // namespace tw
