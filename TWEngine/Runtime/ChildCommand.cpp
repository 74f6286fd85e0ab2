#include "TWEngine/Runtime/ChildCommand.h"

#include <string_view>

#include <unistd.h>

namespace tw {

Environment inheritedEnvironment()
{
    Environment environment;
    for (char **entry = environ; entry && *entry; ++entry) {
        std::string_view const text = *entry;
        auto const equals = text.find('=');
        // Where a name stands twice, the first is what getenv(3) finds.
        if (equals != std::string_view::npos)
            environment.emplace(text.substr(0, equals), text.substr(equals + 1));
    }
    return environment;
}

} // namespace tw
