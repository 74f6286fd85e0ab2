#include "Tarnwick/Preview/FilePreviews.h"

#include "TWCore/Async/Outcome.h"
#include "TWCore/Provider/FileSystemReader.h"
#include "TWEngine/Preview/EmbeddedPicture.h"
#include "TWEngine/Preview/FolderMeasure.h"
#include "TWEngine/Preview/Thumbnail.h"
#include "TWEngine/Runtime/EngineRuntime.h"
#include "Tarnwick/Format/Fmt.h"
#include "Tarnwick/Preview/PreviewText.h"
#include "Tarnwick/Preview/PreviewWords.h"

namespace tw {

namespace {

bool isFile(EntryKind kind)
{
    return kind == EntryKind::file || kind == EntryKind::symlink || kind == EntryKind::unknown;
}

/// A photograph of this machine that takes long enough to decode that something smaller is shown before.
constexpr std::int64_t largePhotographBytes = 1024 * 1024;

/// Names a version of a file.
std::string keyOf(PreviewSubject const &subject)
{
    return subject.connection + '\0' + subject.path + '\0' + std::to_string(subject.size) + '\0' +
           std::to_string(subject.mtime);
}

} // namespace

void FilePreviews::Request::tell(Text facts, PreviewContent::Body body, PreviewContent::Detail detail) const
{
    show({.name = subject.name, .facts = std::move(facts), .body = std::move(body), .detail = detail});
}

Task<void> FilePreviews::load(PreviewSubject subject, PictureBounds room, Show show)
{
    return perform({shared_from_this(), std::move(subject), room, std::move(show)});
}

Task<void> FilePreviews::perform(Request request)
{
    auto const kind = request.subject.kind;
    if (kind == EntryKind::directory) {
        co_await showFolder(std::move(request));
    } else if (!isFile(kind)) {
        request.tell(PreviewWords::facts(PreviewWords::title(kind), request.subject), PreviewWords::notOpened(kind));
    } else if (request.subject.isRemote) {
        co_await showThere(std::move(request));
    } else {
        co_await showHere(std::move(request));
    }
}

Task<void> FilePreviews::showFolder(Request request)
{
    auto const opened = co_await request.subject.browser->open(request.subject.path);
    auto const facts = PreviewWords::facts("folder", request.subject);
    auto const content = PreviewWords::count(opened.snapshot);
    request.tell(facts, content);
    if (request.subject.isRemote)
        co_return;
    auto const progress = [request, facts, content](Measure const &sum) {
        request.tell(facts, PreviewWords::measured(content, sum, PreviewWords::Measuring::underWay));
    };
    auto const sum = co_await FolderMeasure::run(request.self->engine.files(), request.subject.path, progress);
    request.tell(facts, PreviewWords::measured(content, sum, PreviewWords::Measuring::done));
}

Task<PreviewFile> FilePreviews::openHere(EngineRuntime *engine, std::string path)
{
    auto const opened = co_await engine->files().run(
        path, FileLanes::LastLink::follow, WorkPriority::interactive,
        [](std::string const &place) { return std::make_shared<PreviewFile>(PreviewFile::open(place)); });
    co_return std::move(*opened);
}

Task<void> FilePreviews::showHere(Request request)
{
    auto file = co_await openHere(&request.self->engine, request.subject.path);
    if (file.kind == EntryKind::directory) { // behind a link
        co_await showFolder(std::move(request));
        co_return;
    }
    if (file.kind != EntryKind::file) {
        request.tell(PreviewWords::facts(PreviewWords::title(file.kind), request.subject),
                     PreviewWords::notOpened(file.kind));
        co_return;
    }
    request.subject.size = file.size;
    auto kind = PreviewKind::of(file.beginning, request.subject.name);
    if (kind.look == PreviewKind::Look::picture) {
        co_await showPictureHere(std::move(request), std::move(kind), std::move(file));
    } else if (kind.look == PreviewKind::Look::text) {
        co_await showText(std::move(request), std::move(file.beginning));
    } else {
        co_await showThumbnail(std::move(request), std::move(kind), std::move(file));
    }
}

/// A large photograph shows the picture of itself that is in it, which is soon decoded, or else a draft.
Task<void> FilePreviews::showPictureHere(Request request, PreviewKind kind, PreviewFile file)
{
    auto draft = PictureDraft::none;
    if (file.size >= largePhotographBytes) {
        auto const isShown = co_await showStandIn(request, kind, EmbeddedPicture::in(file.beginning));
        draft = isShown ? PictureDraft::none : PictureDraft::wanted;
    }
    co_await showPicture(std::move(request), std::move(kind), std::move(file.descriptor), draft);
}

/// What the desktop makes pictures of, such as a film, is not read: its picture is.
Task<void> FilePreviews::showThumbnail(Request request, PreviewKind kind, PreviewFile file)
{
    auto const facts = PreviewWords::facts(kind.title, request.subject);
    auto picture = co_await thumbnailOf(request, file.mtime);
    if (!picture && request.self->thumbnails.maker) {
        request.tell(facts, Text());
        auto const isMade = co_await makeThumbnail(request, std::move(file.beginning));
        if (isMade)
            picture = co_await thumbnailOf(request, file.mtime);
    }
    if (picture)
        request.tell(facts, std::move(picture));
    else
        request.tell(facts, PreviewWords::nothingToSee());
}

/// Null: there is none.
Task<std::shared_ptr<Picture const>> FilePreviews::thumbnailOf(Request request, std::int64_t mtime)
{
    auto const folder = request.self->thumbnails.folder;
    if (folder.empty())
        co_return nullptr;
    auto const found = co_await request.self->engine.workers().run(
        WorkPriority::interactive, [folder, path = request.subject.path, mtime] {
            return std::make_shared<FileDescriptor>(Thumbnail::find(folder, path, mtime));
        });
    if (!*found)
        co_return nullptr;
    PictureRequest png{.format = "png", .room = request.room};
    auto decoded = co_await request.self->decoder->decode(std::move(*found), std::move(png));
    if (!decoded)
        co_return nullptr;
    co_return std::make_shared<Picture const>(*std::move(decoded));
}

Task<bool> FilePreviews::makeThumbnail(Request request, std::string beginning)
{
    auto question = co_await request.self->engine.workers().run(
        WorkPriority::interactive,
        [path = request.subject.path, bytes = std::move(beginning)] { return Thumbnail::questionAbout(path, bytes); });
    if (question.uri.empty() || question.mimeType.empty())
        co_return false;
    auto const isMade =
        co_await request.self->thumbnails.maker->make(std::move(question.uri), std::move(question.mimeType));
    co_return isMade;
}

Task<void> FilePreviews::showThere(Request request)
{
    auto reader = std::dynamic_pointer_cast<FileSystemReader>(request.subject.browser->providerRef());
    if (!reader) {
        request.tell({}, Text("%@ cannot read files", {request.subject.connection}));
        co_return;
    }
    if (request.subject.size > mostFetchedBytes) {
        request.tell(PreviewWords::facts("file", request.subject), PreviewWords::tooBig(request.subject));
        co_return;
    }
    auto beginning = co_await reader->readChunk(request.subject.path, 0, PreviewFile::beginningBytes);
    auto kind = PreviewKind::of(beginning, request.subject.name);
    if (kind.look == PreviewKind::Look::picture) {
        if (beginning.size() < PreviewFile::beginningBytes)
            co_await showPicture(std::move(request), std::move(kind), PreviewFile::inMemory(beginning));
        else
            co_await showFetched(std::move(request), std::move(kind), std::move(reader), std::move(beginning));
    } else if (kind.look == PreviewKind::Look::text) {
        co_await showText(std::move(request), std::move(beginning));
    } else {
        request.tell(PreviewWords::facts(kind.title, request.subject), PreviewWords::nothingToSee());
    }
}

/// Shows what there is of a photograph until it is decoded. False: nothing, as of other pictures.
Task<bool> FilePreviews::showStandIn(Request request, PreviewKind kind, std::string jpeg)
{
    if (kind.format != "jpeg" || jpeg.empty())
        co_return false;
    PictureRequest whole{.format = kind.format, .room = request.room};
    auto decoded = co_await request.self->decoder->decode(PreviewFile::inMemory(jpeg), std::move(whole));
    if (!decoded)
        co_return false;
    request.tell(PreviewWords::facts(kind.title, request.subject), std::make_shared<Picture const>(*std::move(decoded)),
                 PreviewContent::Detail::little);
    co_return true;
}

/// What a listing says is the size of a link, or of a file that has grown since.
Task<bool> FilePreviews::isTooBig(std::shared_ptr<FileSystemReader> reader, std::string path)
{
    auto const beyond = co_await reader->readChunk(std::move(path), mostFetchedBytes, 1);
    co_return !beyond.empty();
}

/// A JPEG shows the picture of itself that is in it. Without one it shows its upper part, or all of it in less detail.
Task<void> FilePreviews::showFetched(Request request, PreviewKind kind, std::shared_ptr<FileSystemReader> reader,
                                     std::string beginning)
{
    auto const facts = PreviewWords::facts(kind.title, request.subject);
    request.tell(facts, PreviewWords::fetching(request.subject));
    auto embedded = EmbeddedPicture::in(beginning);
    co_await showStandIn(request, kind, embedded.empty() ? std::move(beginning) : std::move(embedded));
    auto const tooBig = co_await isTooBig(reader, request.subject.path);
    if (tooBig) {
        request.tell(facts, PreviewWords::tooBig());
        co_return;
    }
    auto const local =
        co_await request.self->fetched.copyOf(std::move(reader), request.subject.path, request.subject.size,
                                              keyOf(request.subject), request.subject.connection);
    auto file = co_await openHere(&request.self->engine, local);
    co_await showPicture(std::move(request), std::move(kind), std::move(file.descriptor));
}

Task<void> FilePreviews::showText(Request request, std::string beginning)
{
    auto const isWhole = static_cast<std::int64_t>(beginning.size()) >= request.subject.size;
    auto text = co_await request.self->engine.workers().run(
        WorkPriority::interactive, [bytes = std::move(beginning)] { return PreviewText::of(bytes); });
    auto const extent = isWhole ? PreviewWords::Extent::whole : PreviewWords::Extent::beginning;
    request.tell(PreviewWords::textFacts(text.encoding, extent, request.subject),
                 PreviewContent::Writing{std::move(text.text)});
}

Task<void> FilePreviews::showPicture(Request request, PreviewKind kind, FileDescriptor file, PictureDraft draft)
{
    auto const show = [request, kind](Picture decoded, PreviewContent::Detail detail) {
        auto const picture = std::make_shared<Picture const>(std::move(decoded));
        request.tell(PreviewWords::pictureFacts(kind, *picture, request.subject), picture, detail);
    };
    auto const showDraft = [show](Picture decoded) { show(std::move(decoded), PreviewContent::Detail::little); };
    PictureRequest wish{.format = kind.format, .room = request.room, .draft = draft};
    auto decoded = co_await request.self->decoder->decode(std::move(file), std::move(wish), showDraft);
    if (decoded)
        show(*std::move(decoded), PreviewContent::Detail::all);
    else
        request.tell(PreviewWords::facts(kind.title, request.subject), PreviewWords::failure(decoded.error(), kind));
}

} // namespace tw
