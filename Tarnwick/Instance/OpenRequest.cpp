#include "Tarnwick/Instance/OpenRequest.h"

#include "TWCore/Model/PercentCoding.h"

#include <algorithm>

namespace tw {

namespace {

/// The first part of a message. A change of the message changes it.
constexpr std::string_view version = "tarnwick-open-1";

constexpr std::string_view fileScheme = "file://";

constexpr std::string_view token = "token=";
constexpr std::string_view left = "left=";
constexpr std::string_view right = "right=";
constexpr std::string_view active = "active=";

std::string_view wordOf(std::optional<PaneSide> side)
{
    if (!side)
        return active;
    return *side == PaneSide::left ? left : right;
}

std::optional<PaneSpec> placeOf(std::string_view argument, std::string_view workingDirectory)
{
    if (argument.starts_with(fileScheme)) {
        argument.remove_prefix(std::min(argument.find('/', fileScheme.size()), argument.size()));
        return PaneSpec::parse(PercentCoding::decoded(argument));
    }
    auto const colon = argument.find(':');
    if (argument.starts_with('/') || (colon != std::string_view::npos && colon < argument.find('/')))
        return PaneSpec::parse(argument);
    if (argument.empty())
        return std::nullopt;
    if (argument == ".")
        return PaneSpec::parse(workingDirectory);
    auto const base = workingDirectory == "/" ? std::string_view() : workingDirectory;
    return PaneSpec::parse(std::string(base) + '/' + std::string(argument));
}

/// The folder that a place is in, with the cursor on it. Of a root, the root itself.
PaneSpec folderOf(PaneSpec place)
{
    while (place.path.size() > 1 && place.path.ends_with('/'))
        place.path.pop_back();
    auto const slash = place.path.rfind('/');
    place.cursor = place.path.substr(slash + 1);
    place.path.resize(slash == 0 ? 1 : slash);
    return place;
}

/// The form that PaneSpec::parse reads.
std::string textOf(PaneSpec const &place)
{
    return place.connection + ':' + (place.pathWasExplicit ? place.path : std::string());
}

} // namespace

OpenRequest OpenRequest::from(std::span<char const *const> arguments, std::string_view workingDirectory)
{
    OpenRequest request;
    auto const add = [&](std::optional<PaneSide> side, std::optional<PaneSpec> place) {
        if (place)
            request.places.push_back({.side = side, .place = *std::move(place)});
    };
    for (std::size_t at = 0; at < arguments.size(); ++at) {
        std::string_view const argument = arguments[at];
        if (argument == "--left" || argument == "--right") {
            if (++at < arguments.size())
                add(argument == "--left" ? PaneSide::left : PaneSide::right, PaneSpec::parse(arguments[at]));
        } else if (!argument.starts_with('-')) {
            add(std::nullopt, placeOf(argument, workingDirectory));
        }
    }
    return request;
}

OpenRequest OpenRequest::showing(std::span<std::string const> addresses, Show what)
{
    OpenRequest request;
    for (std::string_view const address : addresses) {
        auto place = address.starts_with(fileScheme) ? placeOf(address, "/") : std::nullopt;
        if (place && what == Show::items)
            place = folderOf(*place);
        if (!place || request.places.size() == mostShown)
            continue;
        auto const isSame = [&](Place const &each) { return each.place.path == place->path; };
        if (std::ranges::none_of(request.places, isSame))
            request.places.push_back({.place = *std::move(place)});
    }
    return request;
}

std::string OpenRequest::encoded() const
{
    std::string message;
    auto const put = [&](std::string const &part) { message += part + '\0'; };
    put(std::string(version));
    put(std::string(token) + activationToken);
    for (auto const &each : places)
        put(std::string(wordOf(each.side)) + textOf(each.place));
    message += '\0';
    return message;
}

std::optional<OpenRequest> OpenRequest::decoded(std::string_view message)
{
    if (!message.starts_with(version) || message.substr(version.size(), 1) != std::string_view("\0", 1))
        return std::nullopt;
    message.remove_prefix(version.size() + 1);
    OpenRequest request;
    while (!message.starts_with('\0')) {
        auto const end = message.find('\0');
        if (end == std::string_view::npos)
            return std::nullopt;
        auto const text = message.substr(0, end);
        message.remove_prefix(end + 1);
        if (text.starts_with(token)) {
            request.activationToken = text.substr(token.size());
        } else {
            for (auto const side : {std::optional<PaneSide>(), {PaneSide::left}, {PaneSide::right}}) {
                if (!text.starts_with(wordOf(side)))
                    continue;
                if (auto place = PaneSpec::parse(text.substr(wordOf(side).size())))
                    request.places.push_back({.side = side, .place = *std::move(place)});
            }
        }
    }
    return request;
}

bool wantsOwnProcess(std::span<char const *const> arguments)
{
    return std::ranges::any_of(arguments, [](std::string_view argument) {
        auto const isOption = argument.starts_with('-');
        return isOption && argument != "--left" && argument != "--right";
    });
}

} // namespace tw
