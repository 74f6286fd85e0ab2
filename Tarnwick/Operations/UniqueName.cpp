#include "Tarnwick/Operations/UniqueName.h"

#include "Tarnwick/Format/Fmt.h"

namespace tw {

std::string numberedName(std::string_view name, int number)
{
    auto const [base, extension] = Fmt::splitExtension(name, Fmt::IsDirectory::no);
    auto numbered = std::string(base) + "(" + std::to_string(number) + ")";
    return extension.empty() ? numbered : numbered + "." + std::string(extension);
}

std::string uniqueName(std::string const &name, IsTaken const &isTaken)
{
    if (!isTaken(name))
        return name;
    for (int number = 2; number <= highestUniqueNumber; ++number) {
        if (auto candidate = numberedName(name, number); !isTaken(candidate))
            return candidate;
    }
    return name;
}

} // namespace tw
