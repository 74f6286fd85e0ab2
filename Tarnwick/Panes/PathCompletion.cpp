#include "Tarnwick/Panes/PathCompletion.h"

#include "TWCore/Model/DisplayText.h"

#include <algorithm>

namespace tw {

namespace {

bool isContinuation(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

/// Of two names, without half a character at the end.
std::string_view common(std::string_view a, std::string_view b)
{
    auto length = static_cast<std::size_t>(std::ranges::mismatch(a, b).in1 - a.begin());
    while (length > 0 && length < a.size() && isContinuation(a[length]))
        --length;
    return a.substr(0, length);
}

} // namespace

std::string_view PathCompletion::headOf(std::string_view typed)
{
    return typed.substr(0, typed.rfind('/') + 1);
}

PathCompletion::PathCompletion(std::string text, DirectorySnapshot const &folder) : typed(std::move(text))
{
    auto const head = headOf(typed);
    auto const begun = std::string_view(typed).substr(head.size());
    std::vector<std::string_view> found;
    for (auto const &entry : folder.entries()) {
        auto const name = folder.nameBytes(entry);
        auto const leadsOn = entry.isDirectory() || entry.kind == EntryKind::symlink;
        auto const isHidden = name.starts_with('.') && !begun.starts_with('.');
        // Without a slash before it, what is before a colon would be a host.
        auto const isHostLike = head.empty() && name.find(':') != std::string_view::npos;
        if (leadsOn && !isHidden && !isHostLike && name.starts_with(begun) && onOneLine(name) == name)
            found.push_back(name);
    }
    current = typed;
    if (found.empty())
        return;
    auto shared = found.front();
    for (auto const name : found)
        shared = common(shared, name);
    current = std::string(head).append(shared).append(found.size() == 1 ? "/" : "");
    auto const kept = std::min(found.size(), mostNames);
    std::ranges::partial_sort(found, found.begin() + static_cast<std::ptrdiff_t>(kept));
    names.assign(found.begin(), found.begin() + static_cast<std::ptrdiff_t>(kept));
    if (current == typed)
        turn(Turn::forward); // the key must do something
}

void PathCompletion::turn(Turn direction)
{
    if (names.size() < 2)
        return;
    auto const last = names.size() - 1;
    if (direction == Turn::forward)
        choose(hasTurned && next < last ? next + 1 : 0);
    else
        choose(hasTurned && next > 0 ? next - 1 : last);
}

void PathCompletion::choose(std::size_t which)
{
    next = which;
    hasTurned = true;
    current = std::string(headOf(typed)) + names.at(which);
}

} // namespace tw
