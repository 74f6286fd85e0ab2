#include "Tarnwick/Toolkit/Widgets/StatusLineInterface.h"

#include "Tarnwick/Toolkit/Widgets/ElidedLabel.h"

namespace tw {

namespace {

QAccessibleInterface *interfaceOf(QString const & /*className*/, QObject *object)
{
    auto *const label = qobject_cast<ElidedLabel *>(object);
    return label ? new StatusLineInterface(label) : nullptr; // Qt deletes it
}

} // namespace

void StatusLineInterface::install()
{
    QAccessible::installFactory(interfaceOf); // a second time changes nothing
}

} // namespace tw
