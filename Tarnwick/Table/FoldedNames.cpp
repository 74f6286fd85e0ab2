#include "Tarnwick/Table/FoldedNames.h"

#include "Tarnwick/Table/FoldedName.h"

#include <cstring>

namespace tw {

namespace {

constexpr char separator = '\0';

/// Folded within two milliseconds in any alphabet.
constexpr std::size_t namesBetweenLooks = 2000;

/// glibc's own search, which is several times as fast as that of std::string for a needle with a frequent first byte.
std::size_t positionOf(std::string_view needle, std::string_view text, std::size_t from)
{
    auto const rest = text.substr(from);
    auto const *const found = memmem(rest.data(), rest.size(), needle.data(), needle.size());
    return found ? static_cast<std::size_t>(static_cast<char const *>(found) - text.data()) : std::string_view::npos;
}

/// The nearest of some places, counted from one of them on and round.
class Nearest {
public:
    explicit Nearest(std::uint32_t place) : from(place) {}

    void take(std::uint32_t place)
    {
        // Wraps, so that what is before `from` comes after all that is behind.
        if (!found || place - from < *found - from)
            found = place;
    }

    std::optional<std::size_t> place() const { return found; }

private:
    std::uint32_t const from;
    std::optional<std::uint32_t> found;
};

} // namespace

FoldedNames::FoldedNames(DirectorySnapshot const &listing)
{
    take(listing, {});
}

std::optional<FoldedNames> FoldedNames::of(DirectorySnapshot const &listing, std::stop_token const &calledOff)
{
    FoldedNames names;
    return names.take(listing, calledOff) ? std::optional(std::move(names)) : std::nullopt;
}

bool FoldedNames::take(DirectorySnapshot const &listing, std::stop_token const &calledOff)
{
    auto const entries = listing.entries();
    starts.reserve(entries.size() + 1);
    std::size_t bytes = 1;
    for (auto const &entry : entries)
        bytes += 1 + entry.nameLength;
    text.reserve(bytes);
    for (auto const &entry : entries) {
        if (starts.size() % namesBetweenLooks == 0 && calledOff.stop_requested())
            return false;
        starts.push_back(static_cast<std::uint32_t>(text.size()));
        text += separator;
        append(listing.nameBytes(entry));
    }
    starts.push_back(static_cast<std::uint32_t>(text.size()));
    text += separator;
    FoldedName::foldAscii(text);
    return true;
}

void FoldedNames::append(std::string_view name)
{
    auto const start = text.size();
    auto isUsual = false;
    text.resize_and_overwrite(start + name.size(), [&](char *bytes, std::size_t size) {
        isUsual = FoldedName::copyUsual(name, bytes + start);
        return size;
    });
    if (isUsual)
        return;
    text.resize(start);
    text += FoldedName::of(name);
}

std::vector<std::uint32_t> FoldedNames::placesOf(std::span<std::uint32_t const> rows, std::size_t count)
{
    std::vector<std::uint32_t> places(count, notOnShow);
    for (std::uint32_t place = 0; place < rows.size(); ++place)
        places[rows[place]] = place;
    return places;
}

std::optional<std::size_t> FoldedNames::find(std::string_view typed, std::size_t from,
                                             std::span<std::uint32_t const> places) const
{
    if (typed.empty())
        return std::nullopt;
    auto const wanted = FoldedName::of(typed);
    // A place from which there is no row leads to the first one.
    Nearest beginning(static_cast<std::uint32_t>(from));
    Nearest part(static_cast<std::uint32_t>(from));
    std::size_t name = 0;
    auto position = positionOf(wanted, text, 0);
    while (position != std::string_view::npos) {
        while (starts[name + 1] <= position)
            ++name;
        if (places[name] != notOnShow)
            (position == starts[name] + 1 ? beginning : part).take(places[name]);
        position = positionOf(wanted, text, starts[name + 1]);
    }
    return beginning.place() ? beginning.place() : part.place();
}

} // namespace tw
