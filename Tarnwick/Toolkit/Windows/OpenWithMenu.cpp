#include "Tarnwick/Toolkit/Windows/OpenWithMenu.h"

#include "Tarnwick/Toolkit/Appearance/ApplicationIcon.h"
#include "Tarnwick/Toolkit/Appearance/Wording.h"

#include <QMenu>

#include <algorithm>

namespace tw::OpenWithMenu {

namespace {

/// More would take the screen; the last item of the menu leads to all.
constexpr std::size_t mostApplications = 12;

QString titleOf(Application const &application)
{
    auto name = QString::fromStdString(application.name);
    name.replace(QLatin1Char('&'), QLatin1String("&&"));
    return application.isDefault ? name + Wording::shown(" (default)") : name;
}

} // namespace

void fill(QMenu &menu, std::span<Application const> applications,
          std::function<void(std::string const &identifier)> const &onPicked)
{
    auto *const before = menu.actions().isEmpty() ? nullptr : menu.actions().constFirst();
    for (auto const &each : applications.first(std::min(applications.size(), mostApplications))) {
        auto *const action = new QAction(applicationIcon(each), titleOf(each), &menu);
        QObject::connect(action, &QAction::triggered, &menu,
                         [onPicked, chosen = each.identifier] { onPicked(chosen); });
        menu.insertAction(before, action);
    }
    if (!applications.empty())
        menu.insertSeparator(before);
}

} // namespace tw::OpenWithMenu
