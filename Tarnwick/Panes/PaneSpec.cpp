#include "Tarnwick/Panes/PaneSpec.h"

#include "TWCore/Model/ListingParser.h"
#include "TWEngine/Platform/HomeFolder.h"

namespace tw {

namespace {

constexpr std::string_view local = "local";

} // namespace

PaneSpec PaneSpec::localHome()
{
    return {.connection = std::string(local),
            .path = ListingParser::normalize(HomeFolder::path()),
            .pathWasExplicit = true};
}

std::optional<PaneSpec> PaneSpec::parse(std::string_view text)
{
    if (text.empty())
        return std::nullopt;
    if (text.starts_with('/'))
        return PaneSpec{.connection = std::string(local), .path = std::string(text), .pathWasExplicit = true};
    auto const colon = text.find(':');
    if (colon == std::string_view::npos)
        return PaneSpec{.connection = std::string(text), .path = "/", .pathWasExplicit = false};
    auto const connection = text.substr(0, colon);
    auto const path = text.substr(colon + 1);
    if (connection.empty())
        return std::nullopt;
    if (!path.empty())
        return PaneSpec{.connection = std::string(connection), .path = std::string(path), .pathWasExplicit = true};
    return PaneSpec{.connection = std::string(connection),
                    .path = connection == local ? localHome().path : "/",
                    .pathWasExplicit = false};
}

PaneSpec::Sides PaneSpec::fromCommandLine(std::span<char const *const> arguments)
{
    Sides sides;
    for (std::size_t i = 0; i + 1 < arguments.size(); ++i) {
        std::string_view const option = arguments[i];
        if (option != "--left" && option != "--right")
            continue;
        ++i;
        if (auto spec = parse(arguments[i]))
            (option == "--left" ? sides.left : sides.right) = std::move(spec);
    }
    return sides;
}

} // namespace tw
