#include "tests/support/TemporaryFolder.h"

#include <cstdlib>
#include <fstream>
#include <optional>
#include <sstream>
#include <stdexcept>

#include <sys/stat.h>

namespace tw::test {

namespace fs = std::filesystem;

TemporaryFolder::TemporaryFolder() : TemporaryFolder(fs::temp_directory_path().string()) {}

TemporaryFolder::TemporaryFolder(std::string const &base)
{
    root = (fs::path(base) / "tarnwick-test-XXXXXX").string();
    if (!mkdtemp(root.data()))
        throw std::runtime_error("no temporary folder could be made");
}

TemporaryFolder::~TemporaryFolder()
{
    std::error_code ignored;
    for (auto walk = fs::recursive_directory_iterator(root, ignored); walk != fs::recursive_directory_iterator();
         walk.increment(ignored)) {
        if (walk->is_directory(ignored) && !walk->is_symlink(ignored))
            fs::permissions(walk->path(), fs::perms::owner_all, fs::perm_options::add, ignored);
    }
    fs::remove_all(root, ignored);
}

std::string TemporaryFolder::file(std::string_view name, std::string_view content) const
{
    auto made = path(name);
    std::ofstream stream(made, std::ios::binary);
    stream.write(content.data(), static_cast<std::streamsize>(content.size()));
    if (!stream.flush())
        throw std::runtime_error("cannot write " + made);
    return made;
}

std::string TemporaryFolder::folder(std::string_view name) const
{
    auto made = path(name);
    fs::create_directories(made);
    return made;
}

std::string TemporaryFolder::link(std::string_view name, std::string const &target) const
{
    auto made = path(name);
    fs::create_symlink(target, made);
    return made;
}

std::string anotherFileSystem(std::string const &path)
{
    auto const deviceOf = [](std::string const &where) -> std::optional<dev_t> {
        struct stat status;
        return ::stat(where.c_str(), &status) == 0 ? std::optional(status.st_dev) : std::nullopt;
    };
    for (auto const *const other : {"/dev/shm", "/tmp", "/var/tmp"}) {
        auto const device = deviceOf(other);
        if (device && device != deviceOf(path))
            return other;
    }
    throw std::runtime_error("there is no second file system for " + path);
}

std::string contentOf(std::string const &path)
{
    // Byte by byte, with iterators, a sanitizer takes a second for a megabyte.
    std::ifstream const stream(path, std::ios::binary);
    std::ostringstream content;
    content << stream.rdbuf();
    return std::move(content).str();
}

} // namespace tw::test
