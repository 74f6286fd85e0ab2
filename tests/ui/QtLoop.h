#pragma once

#include <functional>

namespace tw::test {

/// Lets Qt's event loop run until `condition` holds. Fails the test, and answers false, if it does not hold within a
/// limit that only a hang reaches.
bool processUntil(std::function<bool()> const &condition);

/// Lets everything happen that has been asked for already.
void processPosted();

} // namespace tw::test
