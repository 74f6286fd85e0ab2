#include "TWCore/Archives/ArchiveListing.h"

#include <algorithm>
#include <charconv>
#include <ctime>
#include <optional>

namespace tw::ArchiveListing {

namespace {

/// The kind and the rights, a blank, and what at least must follow.
constexpr std::size_t shortestLine = 13;
constexpr std::size_t fewestFields = 4;

constexpr bool isDigit(char character)
{
    return character >= '0' && character <= '9';
}

bool isNumber(std::string_view text)
{
    return !text.empty() && std::ranges::all_of(text, isDigit);
}

/// The next line, without its end; nothing at the end of the text.
std::optional<std::string_view> takeLine(std::string_view &text)
{
    if (text.empty())
        return std::nullopt;
    auto const end = std::min(text.find('\n'), text.size());
    auto line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    if (line.ends_with('\r'))
        line.remove_suffix(1);
    return line;
}

/// The run of bytes without a blank from `position` on, behind blanks; empty at the end of the line.
std::string_view fieldFrom(std::string_view line, std::size_t position)
{
    auto const begin = std::min(line.find_first_not_of(' ', position), line.size());
    auto const end = std::min(line.find(' ', begin), line.size());
    return line.substr(begin, end - begin);
}

/// The run of bytes without a blank that ends before `position`; empty at the start of the line.
std::string_view fieldBefore(std::string_view line, std::size_t position)
{
    auto const last = position == 0 ? std::string_view::npos : line.find_last_not_of(' ', position - 1);
    if (last == std::string_view::npos)
        return {};
    auto const blank = line.find_last_of(' ', last);
    auto const begin = blank == std::string_view::npos ? 0 : blank + 1;
    return line.substr(begin, last + 1 - begin);
}

/// As in "12:34" or "12:34:56".
bool isTimeOfDay(std::string_view field)
{
    int groups = 0;
    for (;; ++groups) {
        auto const colon = field.find(':');
        if (!isNumber(field.substr(0, colon)))
            return false;
        if (colon == std::string_view::npos)
            break;
        field.remove_prefix(colon + 1);
    }
    return groups == 1 || groups == 2;
}

bool hasFields(std::string_view line, std::size_t count)
{
    for (std::size_t position = 0; count > 0; --count) {
        auto const field = fieldFrom(line, position);
        if (field.empty())
            return false;
        position = static_cast<std::size_t>(field.data() + field.size() - line.data());
    }
    return true;
}

/// The first time of day in a line.
std::optional<std::string_view> timeOfDayIn(std::string_view line)
{
    for (std::size_t position = 0;;) {
        auto const field = fieldFrom(line, position);
        if (field.empty())
            return std::nullopt;
        if (isTimeOfDay(field))
            return field;
        position = static_cast<std::size_t>(field.data() + field.size() - line.data());
    }
}

template <class Number>
Number numberOr0(std::string_view text)
{
    Number number = 0;
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size() ? number : 0;
}

/// The nearest whole number before `position`.
std::int64_t sizeBefore(std::string_view line, std::size_t position)
{
    for (;;) {
        auto const field = fieldBefore(line, position);
        if (field.empty())
            return 0;
        if (isNumber(field))
            return numberOr0<std::int64_t>(field);
        position = static_cast<std::size_t>(field.data() - line.data());
    }
}

constexpr std::string_view beforeHardTarget = " link to ";

/// What a link is followed by is its target.
std::string_view withoutTarget(std::string_view name)
{
    name = name.substr(0, name.find(" -> "));
    return name.substr(0, name.find(beforeHardTarget));
}

std::optional<ArchiveEntry> entryOfTarLine(std::string_view line)
{
    if (line.size() < shortestLine)
        return std::nullopt;
    auto const time = timeOfDayIn(line);
    if (!time || !hasFields(line, fewestFields))
        return std::nullopt;
    auto const begin = static_cast<std::size_t>(time->data() - line.data());
    auto name = line.substr(begin + time->size());
    if (name.starts_with(' '))
        name.remove_prefix(1);
    name = withoutTarget(name);

    ArchiveEntry entry{.path = normalise(unescape(name)), .isDirectory = line.front() == 'd' || name.ends_with('/')};
    if (entry.path.empty())
        return std::nullopt;
    if (!entry.isDirectory)
        entry.size = sizeBefore(line, begin);
    return entry;
}

/// The fields of "2024-01-31 12:34:56", or nothing for any other form.
std::optional<std::tm> fieldsOfDate(std::string_view value)
{
    constexpr std::string_view form = "0000-00-00 00:00:00";
    auto const fits = [](char character, char wanted) {
        return wanted == '0' ? isDigit(character) : character == wanted;
    };
    if (value.size() != form.size() || !std::ranges::equal(value, form, fits))
        return std::nullopt;
    auto const number = [&](std::size_t position, std::size_t length) {
        return numberOr0<int>(value.substr(position, length));
    };
    std::tm fields{};
    fields.tm_year = number(0, 4) - 1900;
    fields.tm_mon = number(5, 2) - 1;
    fields.tm_mday = number(8, 2);
    fields.tm_hour = number(11, 2);
    fields.tm_min = number(14, 2);
    fields.tm_sec = number(17, 2);
    fields.tm_isdst = -1; // whatever holds there on that day
    bool const isDate = fields.tm_mon >= 0 && fields.tm_mon < 12 && fields.tm_mday >= 1 && fields.tm_mday <= 31 &&
                        fields.tm_hour < 24 && fields.tm_min < 60 && fields.tm_sec < 60;
    return isDate ? std::optional(fields) : std::nullopt;
}

double timeOf(std::string_view date)
{
    auto fields = fieldsOfDate(date);
    return fields ? static_cast<double>(std::mktime(&*fields)) : 0;
}

/// The lines about one member, as they come.
class Record {
public:
    void begin(std::string_view itsPath)
    {
        *this = Record();
        path = itsPath;
    }

    void take(std::string_view key, std::string_view value)
    {
        if (key == "Size")
            entry.size = numberOr0<std::int64_t>(value.starts_with('+') ? value.substr(1) : value);
        else if (key == "Attributes")
            entry.isDirectory = entry.isDirectory || value.starts_with('D') || value.contains("D_");
        else if (key == "Folder")
            entry.isDirectory = entry.isDirectory || value == "+";
        else if (key == "Modified")
            entry.mtime = timeOf(value);
    }

    void endInto(std::vector<ArchiveEntry> &entries)
    {
        if (!path)
            return;
        entry.path = normalise(std::string(*path));
        if (entry.isDirectory)
            entry.size = 0;
        if (!entry.path.empty())
            entries.push_back(std::move(entry));
    }

private:
    std::optional<std::string_view> path;
    ArchiveEntry entry;
};

} // namespace

std::vector<ArchiveEntry> parseTar(std::string_view text)
{
    std::vector<ArchiveEntry> entries;
    while (auto const line = takeLine(text)) {
        if (auto entry = entryOfTarLine(*line))
            entries.push_back(*std::move(entry));
    }
    return entries;
}

std::vector<ArchiveMembers::HardLink> hardLinksIn(std::string_view text)
{
    std::vector<ArchiveMembers::HardLink> links;
    while (auto const line = takeLine(text)) {
        auto const place = line->starts_with('h') ? line->find(beforeHardTarget) : std::string_view::npos;
        auto entry = place == std::string_view::npos ? std::nullopt : entryOfTarLine(*line);
        if (!entry)
            continue;
        auto target = normalise(unescape(line->substr(place + beforeHardTarget.size())));
        if (!target.empty())
            links.push_back({std::move(entry->path), std::move(target)});
    }
    return links;
}

std::vector<ArchiveEntry> parse7z(std::string_view text)
{
    constexpr std::string_view separator = " = ";
    std::vector<ArchiveEntry> entries;
    Record record;
    while (auto const line = takeLine(text)) {
        auto const middle = line->find(separator);
        if (middle == std::string_view::npos)
            continue;
        auto const key = line->substr(0, middle);
        auto const value = line->substr(middle + separator.size());
        if (key == "Path") {
            record.endInto(entries);
            record.begin(value);
        } else {
            record.take(key, value);
        }
    }
    record.endInto(entries);
    return entries;
}

std::string unescape(std::string_view name)
{
    auto const isOctal = [](char character) { return character >= '0' && character <= '7'; };
    std::string plain;
    plain.reserve(name.size());
    for (std::size_t index = 0; index < name.size(); ++index) {
        auto const behind = name[index] == '\\' ? name.substr(index + 1, 3) : std::string_view();
        if (behind.size() == 3 && behind[0] <= '3' && std::ranges::all_of(behind, isOctal)) {
            plain += static_cast<char>((behind[0] - '0') * 64 + (behind[1] - '0') * 8 + (behind[2] - '0'));
            index += 3;
        } else {
            plain += name[index];
            if (behind.starts_with('\\'))
                ++index;
        }
    }
    return plain;
}

std::string normalise(std::string path)
{
    if (!path.contains('/'))
        std::ranges::replace(path, '\\', '/');
    std::string_view rest = path;
    while (rest.starts_with("./"))
        rest.remove_prefix(2);
    rest.remove_prefix(std::min(rest.find_first_not_of('/'), rest.size()));
    rest = rest.substr(0, rest.find_last_not_of('/') + 1);
    if (rest.size() < path.size())
        path.assign(rest.data(), rest.size());
    return path;
}

} // namespace tw::ArchiveListing
