#include "TWEngine/Transfer/KeptWords.h"

#include "TWCore/Model/DisplayText.h"
#include "TWCore/Model/Trimmed.h"

namespace tw {

void KeptWords::hear(std::string_view bytes)
{
    auto const atFirst = bytes.substr(0, mostAtFirst - first.size());
    first += atFirst;
    last += bytes.substr(atFirst.size());
    if (last.size() <= mostAtLast)
        return;
    hasGap = true;
    last.erase(0, last.size() - mostAtLast);
}

std::string KeptWords::text() const
{
    return std::string(trimmed(repaired(hasGap ? first + "\n…\n" + last : first + last)));
}

} // namespace tw
