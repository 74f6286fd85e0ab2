#include "tests/support/DiskRows.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <ostream>
#include <stdexcept>

#include <dirent.h>
#include <sys/stat.h>

namespace tw::test {

namespace {

EntryKind kindOf(mode_t mode)
{
    switch (mode & S_IFMT) {
    case S_IFREG:
        return EntryKind::file;
    case S_IFDIR:
        return EntryKind::directory;
    case S_IFLNK:
        return EntryKind::symlink;
    case S_IFIFO:
        return EntryKind::fifo;
    case S_IFSOCK:
        return EntryKind::socket;
    case S_IFCHR:
        return EntryKind::charDev;
    case S_IFBLK:
        return EntryKind::blockDev;
    default:
        return EntryKind::unknown;
    }
}

void collect(std::string const &root, std::string const &below, int depth, Rows &rows)
{
    for (auto const &name : namesOnDisk(root + below)) {
        auto const path = below + '/' + name;
        struct stat status;
        if (lstat((root + path).c_str(), &status) != 0)
            throw std::runtime_error("a file of the test is gone");
        rows.insert({path.substr(1), kindOf(status.st_mode), status.st_size, status.st_mtime,
                     static_cast<std::uint16_t>(status.st_mode & 07777U)});
        if (S_ISDIR(status.st_mode) && depth > 1)
            collect(root, path, depth - 1, rows);
    }
}

} // namespace

void PrintTo(Row const &row, std::ostream *stream)
{
    *stream << ::testing::PrintToString(row.path) << ' ' << static_cast<char>(row.kind) << ' ' << row.size << ' '
            << row.mtime << ' ' << row.mode;
}

Rows rowsOnDisk(std::string const &root, int depth)
{
    Rows rows;
    collect(root, "", depth, rows);
    return rows;
}

Rows rowsOf(std::map<std::string, DirectorySnapshot> const &listings, std::string const &root)
{
    Rows rows;
    for (auto const &[path, snapshot] : listings) {
        auto const below = path == root ? std::string() : path.substr(root.size() + 1) + '/';
        for (auto const &entry : snapshot.entries())
            rows.insert(
                {below + std::string(snapshot.nameBytes(entry)), entry.kind, entry.size, entry.mtime, entry.mode});
    }
    return rows;
}

std::vector<std::string> namesOnDisk(std::string const &path)
{
    std::unique_ptr<DIR, decltype(&closedir)> const stream(opendir(path.c_str()), &closedir);
    std::vector<std::string> names;
    while (auto const *const entry = stream ? readdir(stream.get()) : nullptr) {
        std::string name = entry->d_name;
        if (name != "." && name != "..")
            names.push_back(std::move(name));
    }
    std::ranges::sort(names);
    return names;
}

std::vector<std::string> hostileNames()
{
    std::vector<std::string> names{"-rf",
                                   "--",
                                   "-",
                                   " lead",
                                   "trail ",
                                   "a\nb",
                                   "\nlead",
                                   "trail\n",
                                   "\r\n",
                                   "it's",
                                   "''",
                                   "\"q\"",
                                   "$(touch pwned)",
                                   "`touch pwned`",
                                   "${HOME}",
                                   "a;b",
                                   "a&b|c>d<e",
                                   "*",
                                   "?x",
                                   "[a]",
                                   "{a,b}",
                                   "~x",
                                   "!x",
                                   "#x",
                                   "%s%n",
                                   "\\",
                                   "\\n",
                                   "a\tb",
                                   "\t",
                                   "...",
                                   ".hidden",
                                   "@@TWfedcba9876543210:1:0@@",
                                   "\xFF\xFE",
                                   "\xC3\xA9",
                                   "e\xCC\x81",
                                   "\xED\xA0\x80",
                                   std::string(255, 'x')};
    std::string everyByte;
    for (int byte = 1; byte < 256; ++byte) {
        if (byte != '/')
            everyByte += static_cast<char>(byte);
    }
    names.push_back(everyByte);
    return names;
}

} // namespace tw::test
