#pragma once

#include "TWEngine/Preview/PictureDecoder.h"
#include "TWEngine/Preview/PreviewFile.h"
#include "Tarnwick/Preview/FetchedFiles.h"
#include "Tarnwick/Preview/PreviewKind.h"
#include "Tarnwick/Preview/PreviewLoader.h"
#include "Tarnwick/Preview/Thumbnailer.h"

#include <memory>

namespace tw {

class EngineRuntime;

/// Reads previews of files here and on hosts. Nothing in a file is run, and only a process of its own decodes pictures.
///
/// Of a file on a host the beginning is asked for first. That is all of a text, and of a small picture; only a larger
/// picture is fetched.
///
/// Threads: main context only.
/// Lifetime: shared; the engine outlives it.
class FilePreviews final : public PreviewLoader, public std::enable_shared_from_this<FilePreviews> {
public:
    /// A larger file of a host is not fetched.
    static constexpr std::int64_t mostFetchedBytes = 64 * 1024 * 1024;

    /// The small pictures of files of this machine that the desktop has.
    struct Thumbnails {
        std::string folder = {};                 ///< empty: there are none
        std::shared_ptr<Thumbnailer> maker = {}; ///< null: no more are made
    };

    FilePreviews(EngineRuntime &runtime, FetchedFiles::MakeFolder makeFolder)
        : FilePreviews(runtime, std::move(makeFolder), Thumbnails())
    {
    }

    /// `makeFolder` says where fetched files lie.
    FilePreviews(EngineRuntime &runtime, FetchedFiles::MakeFolder makeFolder, Thumbnails ofDesktop)
        : engine(runtime),
          thumbnails(std::move(ofDesktop)),
          decoder(std::make_shared<PictureDecoder>(runtime, PictureDecoder::Spare::kept)),
          fetched(runtime, std::move(makeFolder))
    {
    }

    Task<void> load(PreviewSubject subject, PictureBounds room, Show show) override;

    void rest() override { decoder->endSpare(); }

private:
    struct Request {
        std::shared_ptr<FilePreviews> self;
        PreviewSubject subject;
        PictureBounds room;
        Show show;

        void tell(Text facts, PreviewContent::Body body,
                  PreviewContent::Detail detail = PreviewContent::Detail::all) const;
    };

    static Task<void> perform(Request request);
    static Task<void> showFolder(Request request);
    static Task<void> showHere(Request request);
    static Task<void> showPictureHere(Request request, PreviewKind kind, PreviewFile file);
    static Task<void> showThere(Request request);
    static Task<void> showFetched(Request request, PreviewKind kind, std::shared_ptr<FileSystemReader> reader,
                                  std::string beginning);
    static Task<bool> showStandIn(Request request, PreviewKind kind, std::string jpeg);
    static Task<bool> isTooBig(std::shared_ptr<FileSystemReader> reader, std::string path);
    static Task<void> showText(Request request, std::string beginning);
    static Task<void> showThumbnail(Request request, PreviewKind kind, PreviewFile file);
    static Task<std::shared_ptr<Picture const>> thumbnailOf(Request request, std::int64_t mtime);
    static Task<bool> makeThumbnail(Request request, std::string beginning);
    static Task<void> showPicture(Request request, PreviewKind kind, FileDescriptor file,
                                  PictureDraft draft = PictureDraft::none);
    static Task<PreviewFile> openHere(EngineRuntime *engine, std::string path);

    EngineRuntime &engine;
    Thumbnails const thumbnails;
    std::shared_ptr<PictureDecoder> const decoder;
    FetchedFiles fetched;
};

} // namespace tw
