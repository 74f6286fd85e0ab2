#include "Tarnwick/Dragging/DropDecision.h"

#include "Tarnwick/Connections/ConnectionItem.h"
#include "Tarnwick/Operations/CountPhrase.h"

#include <algorithm>
#include <string_view>

namespace tw {

namespace {

std::string withSlash(std::string const &folder)
{
    return folder.ends_with('/') ? folder : folder + "/";
}

/// The path of `folder` below `above`; empty if it is not below.
std::string_view below(std::string const &above, std::string_view folder)
{
    auto const beginning = withSlash(above);
    return folder.starts_with(beginning) ? folder.substr(beginning.size()) : std::string_view();
}

std::string_view folderOf(std::string_view path)
{
    auto const slash = path.rfind('/');
    return path.substr(0, std::max<std::size_t>(slash, 1));
}

bool goesIntoItself(DragOffer const &offer, DropPlace const &place)
{
    if (offer.files) {
        if (offer.files->connection != place.connection)
            return false;
        auto const rest = below(offer.files->directory, place.folder);
        return !rest.empty() &&
               std::ranges::find(offer.files->names, rest.substr(0, rest.find('/'))) != offer.files->names.end();
    }
    return place.connection == localConnection && std::ranges::any_of(offer.paths, [&](std::string const &path) {
               return path == place.folder || !below(path, place.folder).empty();
           });
}

bool isThereAlready(DragOffer const &offer, DropPlace const &place)
{
    if (offer.files)
        return offer.files->connection == place.connection && offer.files->directory == place.folder;
    return place.connection == localConnection &&
           std::ranges::all_of(offer.paths, [&](std::string const &path) { return folderOf(path) == place.folder; });
}

DropDecision::Action actionFor(DragOffer const &offer, DropPlace const &place, DragKeys held)
{
    if (!offer.canMove || place.isArchive || held.control)
        return DropDecision::Action::copy;
    if (held.alt)
        return DropDecision::Action::ask;
    return held.shift ? DropDecision::Action::move : DropDecision::Action::copy;
}

char const *wordsFor(DropDecision::Action action)
{
    switch (action) {
    case DropDecision::Action::move:
        return "move %@ to %@";
    case DropDecision::Action::ask:
        return "copy or move %@ to %@";
    default:
        return "copy %@ to %@";
    }
}

} // namespace

DropDecision DropDecision::of(DragOffer const &offer, DropPlace const &place, DragKeys held)
{
    if (offer.count() == 0)
        return refused("there are no files in this");
    if (!place.isWritable)
        return refused({"%@ is read-only", {place.connection}});
    if (goesIntoItself(offer, place))
        return refused("a folder cannot go into itself");
    if (isThereAlready(offer, place))
        return refused("already here");
    auto const action = actionFor(offer, place, held);
    auto target = place.connection == localConnection ? place.folder : place.connection + ":" + place.folder;
    return {.action = action, .words = {wordsFor(action), {countPhrase(offer.count()), std::move(target)}}};
}

} // namespace tw
