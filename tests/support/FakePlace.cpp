#include "tests/support/FakePlace.h"

#include "TWCore/Provider/SurveyDigest.h"
#include "tests/support/Listings.h"

#include <algorithm>
#include <cctype>

namespace tw::test {

namespace {

using Failed = FileOperationError::Failed;

std::string joined(std::string what, std::vector<std::string> const &parts)
{
    for (auto const &part : parts)
        what += " " + part;
    return what;
}

std::string pathIn(std::string const &folder, std::string const &name)
{
    return folder == "/" ? folder + name : folder + "/" + name;
}

std::string folded(std::string text)
{
    std::ranges::transform(text, text.begin(), [](unsigned char sign) { return std::tolower(sign); });
    return text;
}

bool isBelow(std::string const &path, std::string const &folder)
{
    return folder == "/" ? path != "/" : path.starts_with(folder + "/");
}

} // namespace

std::vector<std::string> FakePlace::below(std::string const &folder) const
{
    std::vector<std::string> paths;
    for (auto const &[path, node] : nodes) {
        if (isBelow(path, folder))
            paths.push_back(path);
    }
    return paths;
}

void FakePlace::copyFrom(FakePlace const &source, std::string const &path, std::string const &folder)
{
    auto const target = spelledHere(pathIn(folder, path.substr(path.rfind('/') + 1)));
    auto const nodesThere = source.nodes; // the place may be this one
    for (auto const &[each, node] : nodesThere) {
        if (each != path && !isBelow(each, path))
            continue;
        auto copy = node;
        copy.inode = ++inodes;
        nodes[target + each.substr(path.size())] = copy;
    }
}

void FakePlace::wakeUp()
{
    for (auto const &each : {&syncing, &making, &removing}) {
        if (auto const waiting = std::exchange(*each, nullptr))
            waiting->succeed({});
    }
    if (auto const waiting = std::exchange(silence, nullptr))
        waiting->settle({.value = Done(), .failure = {}});
}

Task<void> FakePlace::request(std::string what)
{
    requests.push_back(what);
    before(what);
    if (!silence)
        co_return;
    auto waiting = SharedCompletion<Done>::wait(silence);
    if (isHost()) // what was sent to a host is waited for
        waiting = std::move(waiting).withStop({});
    co_await std::move(waiting);
}

void FakePlace::erase(std::string const &path)
{
    std::erase_if(nodes, [&](auto const &each) { return each.first == path || isBelow(each.first, path); });
}

std::uint64_t FakePlace::deviceOf(std::string const &path) const
{
    return !otherFileSystem.empty() && (path == otherFileSystem || isBelow(path, otherFileSystem)) ? 2 : 1;
}

void FakePlace::moveTree(std::string const &from, std::string const &to, Existing existing)
{
    if (deviceOf(from) != deviceOf(to))
        throw FileOperationError::OtherFileSystem(from);
    if (!has(from))
        throw Failed("rename", from, "No such file or directory");
    if (has(to) && (existing == Existing::stays || !nodes.at(to).content))
        throw Failed("rename", from, "File exists");
    auto const moving = nodes;
    for (auto const &[path, node] : moving) {
        if (path != from && !isBelow(path, from))
            continue;
        nodes.erase(path);
        nodes[to + path.substr(from.size())] = node;
    }
}

std::int64_t FakePlace::sizeOf(std::string const &path) const
{
    if (auto const shown = sizes.find(path); shown != sizes.end())
        return shown->second;
    auto const &content = nodes.at(path).content;
    return content ? static_cast<std::int64_t>(content->size()) : 0;
}

bool FakePlace::foldsIn(std::string const &path) const
{
    return takesCasesForOne && (otherFileSystem.empty() || deviceOf(path) == 2);
}

/// The path of a node here that the place takes for `path`.
std::string FakePlace::spelledHere(std::string const &path) const
{
    if (!foldsIn(path))
        return path;
    for (auto const &[each, node] : nodes) {
        if (folded(each) == folded(path))
            return each;
    }
    return path;
}

Task<Listings> FakePlace::fetch(std::string path, int /*depth*/, FetchPriority /*priority*/)
{
    std::vector<ListedEntry> rows;
    for (auto const &[each, node] : nodes) {
        if (!isBelow(each, path) || each.find('/', path == "/" ? 1 : path.size() + 1) != std::string::npos)
            continue;
        auto const name = each.substr(each.rfind('/') + 1);
        rows.push_back(node.content ? test::file(name, static_cast<std::int64_t>(node.content->size()))
                                    : directory(name));
    }
    co_return Listings{{path, listing(path, rows)}};
}

Task<void> FakePlace::makeDirectory(std::string path)
{
    co_await request("makeDirectory " + path);
    if (has(path))
        throw Failed("create folder", path, "File exists");
    if (making)
        co_await Completion<Done>::wait(making);
    folder(path);
}

Task<void> FakePlace::removeEmptyFolder(std::string path)
{
    co_await request("removeEmptyFolder " + path);
    if (!below(path).empty())
        throw Failed("delete", path, "Directory not empty");
    erase(path);
}

Task<void> FakePlace::remove(std::vector<std::string> paths)
{
    co_await request(joined("remove", paths));
    for (auto const &path : paths)
        erase(path);
}

Task<void> FakePlace::removePermanently(std::vector<std::string> paths, LockedFolders /*locked*/)
{
    co_await request(joined("removePermanently", paths));
    for (auto const &path : paths) {
        erase(path);
        if (removing)
            co_await Completion<Done>::wait(removing);
    }
}

Task<void> FakePlace::rename(std::string from, std::string to)
{
    return moveAll({{std::move(from), std::move(to)}}, Existing::stays);
}

Task<void> FakePlace::moveAll(std::vector<Move> moves, Existing existing)
{
    for (auto const &[from, to] : moves) {
        co_await request((existing == Existing::stays ? "move " : "replace ") + from + " " + to);
        moveTree(spelledHere(from), spelledHere(to), existing);
    }
}

Task<FolderFacts> FakePlace::factsAbout(std::string folder, std::vector<std::string> names)
{
    co_await request(joined("factsAbout " + folder, names));
    FolderFacts facts;
    facts.takesCasesForOne = foldsIn(folder);
    if (!has(folder))
        co_return facts;
    facts.state = nodes.at(folder).content ? FolderFacts::State::notAFolder : FolderFacts::State::present;
    facts.realPath = folder;
    for (auto above = folder;; above = above.substr(0, above.rfind('/'))) {
        auto const path = above.empty() ? "/" : above;
        facts.way.push_back({.device = isOneDevice ? 1 : deviceOf(path), .inode = nodes.at(path).inode});
        if (path == "/")
            break;
    }
    for (auto const &name : names) {
        auto const found = nodes.find(spelledHere(pathIn(folder, name)));
        if (found == nodes.end())
            continue;
        auto const &node = found->second;
        facts.taken.push_back({.name = name,
                               .kind = node.content ? EntryKind::file : EntryKind::directory,
                               .size = sizeOf(found->first),
                               .mtime = node.mtime,
                               .identity = FileIdentity{.device = deviceOf(found->first), .inode = node.inode},
                               .isMountPoint = found->first == otherFileSystem});
    }
    co_return facts;
}

Task<Survey> FakePlace::survey(std::string folder, std::vector<std::string> names, Survey::Detail detail)
{
    co_await request(joined("survey " + folder, names));
    Survey survey;
    for (auto const &name : names) {
        auto const root = spelledHere(pathIn(folder, name));
        if (!has(root))
            continue;
        auto &part = survey.parts[name];
        for (auto const &[path, node] : nodes) {
            if (path != root && !isBelow(path, root))
                continue;
            auto const relative = path.substr(root.size());
            auto const size = node.content ? node.content->size() : 0;
            auto const mtime = std::to_string(node.mtime);
            addToSurvey(part,
                        {.path = relative,
                         .kind = node.content ? EntryKind::file : EntryKind::directory,
                         .size = static_cast<std::int64_t>(size),
                         .mtime = mtime},
                        detail);
        }
    }
    co_return survey;
}

Task<void> FakePlace::sync(std::string folder)
{
    co_await request("sync " + folder);
    if (syncing)
        co_await Completion<Done>::wait(syncing);
}

} // namespace tw::test
