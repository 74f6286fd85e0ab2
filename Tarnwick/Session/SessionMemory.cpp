#include "Tarnwick/Session/SessionMemory.h"

#include "Tarnwick/Session/SessionText.h"

#include <algorithm>

namespace tw {

namespace {

constexpr auto sidesKey = "tw.sides";
constexpr auto locationsKey = "tw.locations";

} // namespace

SessionMemory::SessionMemory(Collaborators collaborators) : with(std::move(collaborators))
{
    readSides();
    readLocations();
}

SessionMemory::~SessionMemory()
{
    writing.request_stop();
}

void SessionMemory::readSides()
{
    auto const text = with.defaults.text(sidesKey);
    if (!text || text->empty())
        return;
    openSides = SessionText::sidesFrom(*text);
    auto isWhole = openSides.has_value();
    if (openSides) {
        for (auto &side : *openSides) {
            isWhole = isWhole && side.tabs.size() <= SideState::mostTabs;
            side.tabs.resize(std::min(side.tabs.size(), SideState::mostTabs));
            side.active = std::min(side.active, side.tabs.size() - 1);
        }
    }
    if (!isWhole)
        setAside(sidesKey, *text);
}

void SessionMemory::readLocations()
{
    auto const text = with.defaults.text(locationsKey);
    if (!text || text->empty())
        return;
    if (auto known = SessionText::locationsFrom(*text))
        places = *std::move(known);
    else
        setAside(locationsKey, *text);
}

void SessionMemory::setAside(char const *key, std::string const &text)
{
    auto const broken = std::string(key) + ".broken";
    with.defaults.setText(broken, text);
    with.defaults.flush();
    if (with.note)
        with.note(std::string(key) + " cannot be used as it is; kept as " + broken);
}

void SessionMemory::rememberSides(SideState left, SideState right)
{
    SideStates sides{std::move(left), std::move(right)};
    if (openSides == sides)
        return;
    openSides = std::move(sides);
    changed(haveSidesChanged);
}

std::optional<Location> SessionMemory::location(std::string_view connection) const
{
    auto const found = std::ranges::find(places, connection, &Locations::value_type::first);
    return found == places.end() ? std::nullopt : std::optional(found->second);
}

void SessionMemory::remember(std::string const &connection, std::string const &path, std::optional<std::string> cursor)
{
    if (connection.empty() || path.empty())
        return;
    auto found = std::ranges::find(places, connection, &Locations::value_type::first);
    auto const isKnown = found != places.end();
    if (!cursor && isKnown && found->second.path == path)
        cursor = found->second.cursor;
    Location location{path, std::move(cursor)};
    if (isKnown && found == places.begin() && found->second == location)
        return;
    if (!isKnown)
        found = places.emplace(places.end(), connection, Location());
    found->second = std::move(location);
    std::rotate(places.begin(), found, found + 1);
    places.resize(std::min(places.size(), mostLocations));
    changed(haveLocationsChanged);
}

void SessionMemory::forget(std::string_view connection, std::string_view path)
{
    auto const count =
        std::erase_if(places, [&](auto const &each) { return each.first == connection && each.second.path == path; });
    if (count > 0)
        changed(haveLocationsChanged);
}

void SessionMemory::changed(bool &what)
{
    what = true;
    if (std::exchange(isWritingPlanned, true))
        return;
    spawn({with.mainContext, writing.get_token()}, flushLater(weak_from_this(), with.clock));
}

Task<void> SessionMemory::flushLater(std::weak_ptr<SessionMemory> weak, std::shared_ptr<Clock> clock)
{
    co_await clock->sleep(writingDelay);
    if (auto const self = weak.lock()) {
        self->isWritingPlanned = false;
        self->flush();
    }
}

void SessionMemory::flush()
{
    if (std::exchange(haveSidesChanged, false))
        with.defaults.setText(sidesKey, SessionText::encode(*openSides));
    if (std::exchange(haveLocationsChanged, false))
        with.defaults.setText(locationsKey, SessionText::encode(places));
}

} // namespace tw
