// EmbeddedPicture over the beginning of any file: what it finds is a JPEG that lies in the file, behind a block of its
// own.

#include "TWCore/Check.h"
#include "TWEngine/Preview/EmbeddedPicture.h"

#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const *data, std::size_t size)
{
    std::string_view const file(reinterpret_cast<char const *>(data), size);
    auto const picture = tw::EmbeddedPicture::in(file);
    if (picture.empty())
        return 0;
    constexpr std::size_t blockBytes = 38;
    tw::check(picture.size() > blockBytes, "a picture has no content");
    tw::check(picture.starts_with("\xff\xd8\xff\xe1"), "a picture does not begin as a JPEG");
    tw::check(file.contains(std::string_view(picture).substr(blockBytes)), "a picture is not in its file");
    return 0;
}
