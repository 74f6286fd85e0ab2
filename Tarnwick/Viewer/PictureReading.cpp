#include "Tarnwick/Viewer/PictureReading.h"

#include "TWEngine/Preview/PictureDecoder.h"
#include "TWEngine/Preview/PreviewFile.h"
#include "TWEngine/Runtime/EngineRuntime.h"
#include "Tarnwick/Preview/PreviewKind.h"

#include <algorithm>

namespace tw {

namespace {

using Result = PictureReading::Result;

Task<Result> decodeBytes(EngineRuntime *engine, std::shared_ptr<PictureDecoder> decoder, std::string bytes,
                         std::string name, PictureBounds room)
{
    auto const kind = PreviewKind::of(bytes, name);
    if (kind.look != PreviewKind::Look::picture)
        co_return std::unexpected(PictureFailure::unknownFormat);
    auto const held = std::make_shared<std::string>(std::move(bytes));
    auto const file = co_await engine->workers().run(
        WorkPriority::interactive, [held] { return std::make_shared<FileDescriptor>(PreviewFile::inMemory(*held)); });
    if (!*file)
        co_return std::unexpected(PictureFailure::tooLarge);
    held->clear();
    held->shrink_to_fit();
    PictureRequest request{.format = kind.format, .room = room};
    auto result = co_await decoder->decode(std::move(*file), std::move(request));
    co_return result;
}

} // namespace

Task<Result> PictureReading::read(std::shared_ptr<ViewedFile> file, std::string name, std::int64_t size, Decode decode,
                                  PictureBounds room)
{
    std::string bytes;
    while (std::ssize(bytes) < std::min(size, mostBytes)) {
        auto const chunk = co_await file->read(std::ssize(bytes), chunkBytes);
        if (chunk.empty())
            break;
        bytes += chunk;
    }
    auto result = co_await decode(std::move(bytes), std::move(name), room);
    co_return result;
}

PictureReading::Decode PictureReading::decoder(EngineRuntime &engine)
{
    auto const decoder = std::make_shared<PictureDecoder>(engine, PictureDecoder::Spare::none);
    return [&engine, decoder](std::string bytes, std::string name, PictureBounds room) {
        return decodeBytes(&engine, decoder, std::move(bytes), std::move(name), room);
    };
}

} // namespace tw
