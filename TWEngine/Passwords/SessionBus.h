#pragma once

#include <chrono>
#include <string>

/// The message bus of the user's session.
namespace tw::SessionBus {

/// Its address; empty: there is none. Not as GIO finds it, which starts one where there is none.
std::string address();

/// Whether there is one that greets within `limit`. Blocks for at most that long.
bool answers(std::chrono::milliseconds limit);

} // namespace tw::SessionBus
