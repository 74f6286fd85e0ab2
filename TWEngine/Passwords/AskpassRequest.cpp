#include "TWEngine/Passwords/AskpassRequest.h"

#include <array>

namespace tw {

std::string AskpassRequest::encoded() const
{
    constexpr std::size_t ends = 3;
    auto const used = token.size() + hint.size() + ends;
    auto const room = used < longest ? longest - used : 0;
    return token + '\0' + hint + '\0' + prompt.substr(0, room) + '\0';
}

std::optional<AskpassRequest> AskpassRequest::decoded(std::string_view bytes)
{
    std::array<std::string, 3> fields;
    for (auto &field : fields) {
        auto const end = bytes.find('\0');
        if (end == std::string_view::npos)
            return std::nullopt;
        field = bytes.substr(0, end);
        bytes.remove_prefix(end + 1);
    }
    return AskpassRequest{std::move(fields[0]), std::move(fields[1]), std::move(fields[2])};
}

} // namespace tw
