#include "TWEngine/Transfer/Measure.h"

#include "TWCore/Model/Trimmed.h"
#include "TWCore/Shell/FileCommands.h"
#include "TWEngine/Runtime/OpenFolder.h"

#include <charconv>

#include <fcntl.h>
#include <sys/stat.h>

namespace tw {

namespace {

/// A walk by descriptors holds one for each level; it goes no deeper than the system has them.
constexpr int mostLevels = 400;

class Walk {
public:
    Walk(std::stop_token const &stopped, Measure::Clock::time_point latest) : stop(stopped), until(latest) {}

    void add(struct stat const &status)
    {
        sum.bytes += status.st_size;
        if (!S_ISDIR(status.st_mode))
            ++*sum.files;
    }

    void addContent(int parent, char const *name, int level)
    {
        auto const folder =
            openFolder(FileDescriptor(::openat(parent, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC)));
        if (!folder)
            return;
        auto const number = ::dirfd(folder.get());
        while (auto const *const entry = isOver() ? nullptr : nextEntry(folder)) {
            struct stat status;
            if (::fstatat(number, entry->d_name, &status, AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT) != 0)
                continue;
            add(status);
            if (S_ISDIR(status.st_mode) && level < mostLevels)
                addContent(number, entry->d_name, level + 1);
        }
    }

    bool isOver()
    {
        ended = ended || stop.stop_requested() || Measure::Clock::now() > until;
        return ended;
    }

    bool wasEnded() const noexcept { return ended; }

    Measure sum{.bytes = 0, .files = 0};

private:
    std::stop_token const &stop;
    Measure::Clock::time_point const until;
    bool ended = false;
};

} // namespace

Measure Measure::parse(ShellDialect dialect, std::string_view output)
{
    auto const text = trimmed(output);
    auto const lineEnd = text.find('\n');
    Measure measure{.bytes = FileCommands::totalSize(dialect, text.substr(0, lineEnd))};
    if (lineEnd == std::string_view::npos)
        return measure;
    auto const digits = trimmed(text.substr(lineEnd));
    std::int64_t files = 0;
    auto const *const end = digits.data() + digits.size();
    auto const parsed = std::from_chars(digits.data(), end, files);
    if (parsed.ec == std::errc() && parsed.ptr == end && files >= 0)
        measure.files = files;
    return measure;
}

std::optional<Measure> Measure::here(std::string const &path, std::stop_token const &stop, Clock::time_point until)
{
    Walk walk(stop, until);
    struct stat status;
    if (::lstat(path.c_str(), &status) != 0)
        return walk.sum;
    if (S_ISDIR(status.st_mode))
        walk.addContent(AT_FDCWD, path.c_str(), 0);
    else
        walk.add(status);
    return walk.wasEnded() ? std::nullopt : std::optional(walk.sum);
}

Measure &Measure::operator+=(Measure const &other)
{
    bytes += other.bytes;
    files = files && other.files ? std::optional(*files + *other.files) : std::nullopt;
    return *this;
}

} // namespace tw
