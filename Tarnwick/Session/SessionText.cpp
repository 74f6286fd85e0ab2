#include "Tarnwick/Session/SessionText.h"

#include "TWCore/Model/DisplayText.h"
#include "TWCore/Shell/Base64.h"

#include <algorithm>
#include <nlohmann/json.hpp>

namespace tw::SessionText {

namespace {

/// Keeps the order of its keys.
using Json = nlohmann::ordered_json;

std::string bytesKey(char const *key)
{
    return std::string(key) + "Bytes";
}

void putBytes(Json &object, char const *key, std::string const &bytes)
{
    auto text = repaired(bytes);
    if (text != bytes)
        object[bytesKey(key)] = Base64::encode(bytes);
    object[key] = std::move(text);
}

std::string bytesAt(Json const &object, char const *key)
{
    auto const raw = object.find(bytesKey(key));
    auto bytes = raw != object.end() ? Base64::decode(raw->get_ref<std::string const &>()) : std::nullopt;
    return bytes ? *std::move(bytes) : object.at(key).get<std::string>();
}

template <class T>
std::optional<T> optionalAt(Json const &object, char const *key)
{
    auto const found = object.find(key);
    return found == object.end() || found->is_null() ? std::nullopt : std::optional(found->get<T>());
}

template <class T>
void putOptional(Json &object, char const *key, std::optional<T> const &value)
{
    if (value)
        object[key] = *value;
}

Json jsonOf(PaneState const &tab)
{
    Json object;
    putBytes(object, "connection", tab.connection);
    putBytes(object, "path", tab.path);
    putOptional(object, "sortKey", tab.sortKey);
    putOptional(object, "sortAscending", tab.sortAscending);
    putOptional(object, "showHidden", tab.showHidden);
    return object;
}

PaneState tabFrom(Json const &object)
{
    return {.connection = bytesAt(object, "connection"),
            .path = bytesAt(object, "path"),
            .sortKey = optionalAt<std::string>(object, "sortKey"),
            .sortAscending = optionalAt<bool>(object, "sortAscending"),
            .showHidden = optionalAt<bool>(object, "showHidden")};
}

Json jsonOf(SideState const &side)
{
    auto tabs = Json::array();
    for (auto const &tab : side.tabs)
        tabs.push_back(jsonOf(tab));
    return {{"tabs", std::move(tabs)}, {"active", side.active}};
}

SideState sideFrom(Json const &object)
{
    SideState side;
    for (auto const &tab : object.at("tabs"))
        side.tabs.push_back(tabFrom(tab));
    side.active = static_cast<std::size_t>(std::max<std::int64_t>(object.at("active").get<std::int64_t>(), 0));
    return side;
}

SideStates bothFrom(Json const &sides)
{
    return {sideFrom(sides.at(0)), sideFrom(sides.at(1))};
}

Locations allFrom(Json const &object)
{
    Locations locations;
    for (auto const &[connection, value] : object.items()) {
        Location location{.path = bytesAt(value, "path")};
        if (optionalAt<std::string>(value, "cursor"))
            location.cursor = bytesAt(value, "cursor");
        locations.emplace_back(connection, std::move(location));
    }
    return locations;
}

/// Nothing for what is no JSON, or not of the form that `decode` reads.
template <class Decode>
auto decoded(std::string_view text, Decode decode) -> decltype(decode(Json()))
{
    try {
        return decode(Json::parse(text));
    } catch (Json::exception const &) {
        return std::nullopt;
    }
}

} // namespace

std::string encode(SideStates const &sides)
{
    return Json::array({jsonOf(sides[0]), jsonOf(sides[1])}).dump();
}

std::optional<SideStates> sidesFrom(std::string_view text)
{
    if (text.size() > longestSides)
        return std::nullopt;
    auto sides = decoded(text, [](Json const &json) -> std::optional<SideStates> {
        if (!json.is_array() || json.size() != 2)
            return std::nullopt;
        return bothFrom(json);
    });
    if (!sides || std::ranges::any_of(*sides, [](auto const &side) { return side.tabs.empty(); }))
        return std::nullopt;
    return sides;
}

std::string encode(Locations const &locations)
{
    auto object = Json::object();
    for (auto const &[connection, location] : locations) {
        if (repaired(connection) != connection)
            continue;
        auto &value = object[connection];
        putBytes(value, "path", location.path);
        if (location.cursor)
            putBytes(value, "cursor", *location.cursor);
    }
    return object.dump();
}

std::optional<Locations> locationsFrom(std::string_view text)
{
    if (text.size() > longestLocations)
        return std::nullopt;
    return decoded(text, [](Json const &json) -> std::optional<Locations> {
        if (!json.is_object())
            return std::nullopt;
        return allFrom(json);
    });
}

} // namespace tw::SessionText
