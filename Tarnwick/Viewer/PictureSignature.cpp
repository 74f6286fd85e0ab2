#include "Tarnwick/Viewer/PictureSignature.h"

#include <algorithm>
#include <array>

namespace tw {

bool isProbablyImage(std::string_view beginning)
{
    using namespace std::string_view_literals;
    constexpr std::array signatures{"\x89PNG"sv, "\xff\xd8\xff"sv, "GIF8"sv, "II*\0"sv, "MM\0*"sv};
    constexpr std::size_t boxBytes = 12;
    if (std::ranges::any_of(signatures, [&](auto each) { return beginning.starts_with(each); }))
        return true;
    // Two letters alone begin many a text. The four bytes behind the size are zero in every bitmap.
    if (beginning.starts_with("BM") &&
        beginning.substr(std::min<std::size_t>(6, beginning.size())).starts_with("\0\0\0\0"sv))
        return true;
    // The box that begins a HEIC or an AVIF.
    auto const box = beginning.size() >= boxBytes ? beginning.substr(4) : std::string_view();
    return box.starts_with("ftyp") || box.starts_with("WEBP");
}

} // namespace tw
