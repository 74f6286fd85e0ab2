#include "Tarnwick/Preview/PreviewWords.h"

#include "Tarnwick/Format/Fmt.h"

namespace tw::PreviewWords {

namespace {

Text size(std::int64_t bytes)
{
    return Fmt::size(bytes, EntryKind::file);
}

Text date(PreviewSubject const &subject)
{
    auto const &day = Fmt::date(subject.mtime);
    return day.empty() ? Text() : Text("  ·  %@", {day});
}

} // namespace

Text facts(Text title, PreviewSubject const &subject)
{
    if (subject.kind == EntryKind::directory)
        return Text::sequence({std::move(title), date(subject)});
    return Text::sequence({std::move(title), {"  ·  %@", {size(subject.size)}}, date(subject)});
}

Text pictureFacts(PreviewKind const &kind, Picture const &picture, PreviewSubject const &subject)
{
    if (kind.format == "svg" || kind.format == "pdf")
        return facts(kind.title, subject);
    Text const pixels("  ·  %d × %d", {std::to_string(picture.wholeWidth), std::to_string(picture.wholeHeight)});
    return facts(Text::sequence({kind.title, pixels}), subject);
}

Text textFacts(std::string const &encoding, Extent extent, PreviewSubject const &subject)
{
    auto words = std::vector<Text>{facts("text", subject), {"  ·  %@", {encoding}}};
    if (extent == Extent::beginning)
        words.push_back("  ·  the beginning");
    return Text::sequence(std::move(words));
}

Text title(EntryKind kind)
{
    switch (kind) {
    case EntryKind::fifo:
        return "named pipe";
    case EntryKind::socket:
        return "socket";
    case EntryKind::charDev:
    case EntryKind::blockDev:
        return "device";
    default:
        return "special file";
    }
}

Text notOpened(EntryKind kind)
{
    switch (kind) {
    case EntryKind::fifo:
        return "A pipe is not opened: reading from it would take what another program waits for.";
    case EntryKind::socket:
        return "A socket has no content.";
    default:
        return "A device is not opened: it has no end, or does something when it is read.";
    }
}

Text nothingToSee()
{
    return "There is no preview of files of this kind.";
}

Text tooBig(PreviewSubject const &subject)
{
    return {"%@ is %@ — too big to preview", {subject.name, size(subject.size)}};
}

Text tooBig()
{
    return "This file is too big to preview.";
}

Text fetching(PreviewSubject const &subject)
{
    return {"fetching %@…", {subject.name}};
}

Text failure(PictureFailure failure, PreviewKind const &kind)
{
    switch (failure) {
    case PictureFailure::damaged:
        return "This file is damaged, or something else than it says.";
    case PictureFailure::tooLarge:
        return "This picture takes more memory than a preview may use.";
    case PictureFailure::unknownFormat:
        return {"No plugin on this computer decodes this format (%@).", {kind.format}};
    case PictureFailure::noProgram:
        return "The first page is shown if pdftoppm is installed (package poppler-utils).";
    case PictureFailure::tooSlow:
        return "This picture takes too long to decode.";
    case PictureFailure::crashed:
        return "This picture cannot be decoded.";
    }
    return {};
}

Text count(DirectorySnapshot const &listing)
{
    std::size_t folders = 0;
    for (auto const &entry : listing.entries())
        folders += entry.isDirectory() ? 1 : 0;
    return {"%d files, %d dirs", {std::to_string(listing.count() - folders), std::to_string(folders)}};
}

Text measured(Text const &count, Measure const &sum, Measuring measuring)
{
    auto const files = sum.files.value_or(0);
    auto const below = files == 1 ? Text("1 file") : Text("%d files", {std::to_string(files)});
    auto const *const words =
        measuring == Measuring::underWay ? "\n%@ in %@ so far…" : "\n%@ in %@, with all that is below";
    return Text::sequence({count, {words, {size(sum.bytes), below}}});
}

} // namespace tw::PreviewWords
