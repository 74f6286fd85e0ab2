#include "TWEngine/Runtime/ExitStatus.h"

namespace tw {

std::string ExitStatus::text() const
{
    return (cause == Cause::killed ? "ended by signal " : "exit ") + std::to_string(number);
}

} // namespace tw
