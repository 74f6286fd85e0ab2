#include "TWCore/Model/LocalName.h"

#include <algorithm>

namespace tw::LocalName {

std::string safe(std::string_view name)
{
    std::string result(name);
    std::ranges::replace(result, '/', '_');
    if (result.empty() || result == "." || result == "..")
        return "untitled";
    return result;
}

} // namespace tw::LocalName
