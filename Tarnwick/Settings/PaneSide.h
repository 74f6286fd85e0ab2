#pragma once

namespace tw {

enum class PaneSide { left, right };

} // namespace tw
