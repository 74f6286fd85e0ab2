#include "TWCore/Check.h"

#include <cstdio>
#include <cstdlib>

namespace tw {

void bug(char const *message, std::source_location where)
{
    std::fprintf(stderr, "bug: %s (%s, %s:%u)\n", message, where.function_name(), where.file_name(), where.line());
    std::abort();
}

} // namespace tw
