#include "Tarnwick/Viewer/ViewerWords.h"

#include "Tarnwick/Format/Fmt.h"

namespace tw::ViewerWords {

namespace {

std::string sizeOf(std::int64_t bytes)
{
    return Fmt::size(bytes, EntryKind::file);
}

} // namespace

Text status(ViewerSubject const &subject, FileWindow const &window, Reading const &reading)
{
    std::vector<Text> parts{{"%@:%@   %@", {subject.label, subject.path, sizeOf(reading.totalSize)}}};
    parts.push_back({"  · showing %@", {sizeOf(window.end() - window.begin())}});
    if (window.begin() >= 1)
        parts.push_back({" from %@", {sizeOf(window.begin())}});
    if (!reading.reachedEnd && window.end() < reading.totalSize)
        parts.push_back("  (scroll for more)");
    if (reading.mode == ViewerMode::text)
        parts.push_back({"  · %@", {std::string(TextDecoding::nameOf(reading.encoding))}});
    return Text::sequence(std::move(parts));
}

Text warning(Text words)
{
    return {"⚠︎ %@", {std::move(words)}};
}

Text failure(std::exception_ptr const &failure)
{
    try {
        std::rethrow_exception(failure);
    } catch (std::exception const &error) {
        return Text::ofWords(error.what());
    }
}

Text notAFile(EntryKind kind)
{
    switch (kind) {
    case EntryKind::directory:
        return "this is a folder";
    case EntryKind::fifo:
        return "this is a pipe, which is not read: reading takes from it what somebody else waits for";
    case EntryKind::socket:
        return "this is a socket, which has nothing to show";
    case EntryKind::blockDev:
    case EntryKind::charDev:
        return "this is a device, which is not read";
    default:
        return "this is not a regular file, and is not read";
    }
}

Text onlySoManyLines(std::int64_t lines)
{
    return {"only the first %@ lines have been counted", {std::to_string(lines)}};
}

} // namespace tw::ViewerWords
