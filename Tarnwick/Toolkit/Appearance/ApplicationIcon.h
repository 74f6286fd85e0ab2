#pragma once

#include "TWEngine/Applications/Application.h"

#include <QIcon>

namespace tw {

/// The picture of an application, or that of any application.
QIcon applicationIcon(Application const &application);

} // namespace tw
