#include "TWEngine/Transfer/OpenFolders.h"

namespace tw {

namespace {

/// With what a set needs beside the text.
std::size_t bytesOf(std::string_view name)
{
    return name.size() + 80;
}

} // namespace

bool OpenFolders::enter(std::string_view folder)
{
    while (!isOnTheWayTo(folder))
        leave();
    if (folder.size() <= path.size())
        return true;
    auto const name = folder.substr(path.size());
    auto &outer = levels.back();
    auto const found = outer.awaited.find(name);
    if (found == outer.awaited.end())
        return false;
    outer.awaited.erase(found);
    outer.awaitedBytes -= bytesOf(name);
    awaitedBytes -= bytesOf(name);
    path += name;
    path += '/';
    levels.push_back({.pathBytes = path.size()});
    return true;
}

void OpenFolders::add(std::string_view name)
{
    // Then a member below a forgotten folder is refused. Only BSD tar sends such a member after so many others.
    if (awaitedBytes + bytesOf(name) > mostAwaitedBytes)
        forgetAwaited();
    if (!levels.back().awaited.emplace(name).second)
        return;
    levels.back().awaitedBytes += bytesOf(name);
    awaitedBytes += bytesOf(name);
}

void OpenFolders::remove(std::string_view name)
{
    auto &level = levels.back();
    if (level.awaited.empty())
        return;
    auto const found = level.awaited.find(name);
    if (found == level.awaited.end())
        return;
    level.awaited.erase(found);
    level.awaitedBytes -= bytesOf(name);
    awaitedBytes -= bytesOf(name);
}

bool OpenFolders::isOnTheWayTo(std::string_view folder) const
{
    auto const names = std::string_view(path).substr(0, path.empty() ? 0 : path.size() - 1);
    return path.empty() ||
           (folder.starts_with(names) && (folder.size() == names.size() || folder[names.size()] == '/'));
}

void OpenFolders::leave()
{
    forgetAwaited();
    levels.pop_back();
    path.resize(levels.back().pathBytes);
}

void OpenFolders::forgetAwaited()
{
    auto &level = levels.back();
    awaitedBytes -= level.awaitedBytes;
    level.awaitedBytes = 0;
    level.awaited.clear();
}

} // namespace tw
