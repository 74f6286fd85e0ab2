#include "TWEngine/Shell/ShellAnswer.h"

#include "TWCore/Model/Trimmed.h"
#include "TWCore/Shell/Base64.h"

#include <charconv>

namespace tw::ShellAnswer {

std::int64_t fileSize(std::string_view payload)
{
    auto const digits = trimmed(payload);
    auto const *const end = digits.data() + digits.size();
    std::int64_t size = 0;
    auto const parsed = std::from_chars(digits.data(), end, size);
    return parsed.ec == std::errc() && parsed.ptr == end ? size : 0;
}

std::string fileBytes(ShellDialect dialect, std::string payload)
{
    if (dialect == ShellDialect::posix)
        return payload;
    // A Windows console passes text, not bytes.
    return Base64::decode(trimmed(payload)).value_or(std::string());
}

} // namespace tw::ShellAnswer
