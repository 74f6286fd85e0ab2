#pragma once

#include "TWEngine/Applications/Application.h"

#include <functional>
#include <span>
#include <string>

class QMenu;

namespace tw::OpenWithMenu {

/// Puts applications and a separator before what the menu has already.
void fill(QMenu &menu, std::span<Application const> applications,
          std::function<void(std::string const &identifier)> const &onPicked);

} // namespace tw::OpenWithMenu
