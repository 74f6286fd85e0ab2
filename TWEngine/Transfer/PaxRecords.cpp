#include "TWEngine/Transfer/PaxRecords.h"

#include "TWEngine/Transfer/TarError.h"

#include <charconv>

namespace tw {

namespace {

constexpr auto unreadable = "the archive has attributes that cannot be read";

std::int64_t decimal(std::string_view digits)
{
    std::int64_t number = 0;
    auto const *const end = digits.data() + digits.size();
    auto const parsed = std::from_chars(digits.data(), end, number);
    if (parsed.ec != std::errc() || parsed.ptr != end || number < 0)
        throw TarError(unreadable);
    return number;
}

/// Of two values one program could take the first and another the last.
void set(std::optional<std::string> &field, std::string_view value)
{
    if (field || value.empty() || value.contains('\0'))
        throw TarError(unreadable);
    field = value;
}

void apply(PaxRecords &records, std::string_view key, std::string_view value)
{
    if (key == "path") {
        set(records.name, value);
    } else if (key == "GNU.sparse.name") {
        set(records.sparseName, value);
    } else if (key == "linkpath") {
        set(records.linkTarget, value);
    } else if (key == "size") {
        if (records.size)
            throw TarError(unreadable);
        records.size = decimal(value);
    }
}

} // namespace

PaxRecords PaxRecords::parse(std::string_view data)
{
    PaxRecords records;
    while (!data.empty()) {
        auto const blank = data.find(' ');
        if (blank == std::string_view::npos)
            throw TarError(unreadable);
        auto const length = decimal(data.substr(0, blank));
        if (length < static_cast<std::int64_t>(blank) + 3 || length > static_cast<std::int64_t>(data.size()))
            throw TarError(unreadable);
        auto const record = data.substr(blank + 1, static_cast<std::size_t>(length) - blank - 1);
        auto const equals = record.find('=');
        if (!record.ends_with('\n') || equals == std::string_view::npos)
            throw TarError(unreadable);
        apply(records, record.substr(0, equals), record.substr(equals + 1, record.size() - equals - 2));
        data.remove_prefix(static_cast<std::size_t>(length));
    }
    return records;
}

} // namespace tw
