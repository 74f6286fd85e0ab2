#pragma once

namespace tw {

/// How a viewer shows a file. In the order of its buttons.
enum class ViewerMode { text, hex, image };

} // namespace tw
