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
    if (reading.isFollowed)
        parts.push_back("  · following");
    return Text::sequence(std::move(parts));
}

Text imageStatus(ViewerSubject const &subject, Picture const &picture, PictureBounds finest, std::int64_t totalSize)
{
    std::vector<Text> parts{
        {"%@:%@   %@×%@",
         {subject.label, subject.path, std::to_string(picture.wholeWidth), std::to_string(picture.wholeHeight)}}};
    if (finest.width < picture.wholeWidth || finest.height < picture.wholeHeight)
        parts.push_back(
            {", shown with %@×%@ pixels at most", {std::to_string(finest.width), std::to_string(finest.height)}});
    parts.push_back({"   %@", {sizeOf(totalSize)}});
    return Text::sequence(std::move(parts));
}

Text searching(std::int64_t done, std::int64_t all)
{
    return {"searching… %@ of %@, Escape cancels", {sizeOf(done), sizeOf(all)}};
}

Text notFound()
{
    return "not found";
}

Text continuedAtTheBeginning()
{
    return "continued at the beginning";
}

Text continuedAtTheEnd()
{
    return "continued at the end";
}

Text cannotBeSought(TextDecoding::Encoding encoding)
{
    return {"%@ has no such text", {std::string(TextDecoding::nameOf(encoding))}};
}

Text noExpression()
{
    return "this is not a regular expression";
}

Text noExpressionsIn(TextDecoding::Encoding encoding)
{
    return {"regular expressions are not searched for in %@", {std::string(TextDecoding::nameOf(encoding))}};
}

Text onlyAsciiInSets()
{
    return "a set in a regular expression can only have ASCII characters";
}

Text replaced()
{
    return "another file has taken the place of this one";
}

Text shortened()
{
    return "the file has become shorter, and was read again";
}

Text tooLarge(std::int64_t size)
{
    return {"%@ is too large to display", {sizeOf(size)}};
}

Text undecodable(PictureFailure why)
{
    switch (why) {
    case PictureFailure::tooLarge:
        return "this image has too many pixels to be decoded";
    case PictureFailure::tooSlow:
        return "this image takes too long to decode";
    default:
        return "not an image this Mac can decode";
    }
}

Text noFinerImage()
{
    return "this image needs too much memory to be shown pixel by pixel";
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
