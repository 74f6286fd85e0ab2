#include "TWCore/Archives/DatedListing.h"

#include "TWCore/Archives/ArchiveListing.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <optional>
#include <string>

namespace tw::DatedListing {

namespace {

using Seconds = std::optional<std::int64_t>;

constexpr std::string_view withDot = "./";

/// Calls `take` with each line, without its end.
template <class Take>
void eachLine(std::string_view text, Take const &take)
{
    while (!text.empty()) {
        auto const end = std::min(text.find('\n'), text.size());
        take(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
}

/// Takes the next run of bytes without a blank off the front, and the blanks before it.
std::string_view takeField(std::string_view &line)
{
    line.remove_prefix(std::min(line.find_first_not_of(' '), line.size()));
    auto const field = line.substr(0, line.find(' '));
    line.remove_prefix(field.size());
    return field;
}

template <class Number>
std::optional<Number> numberIn(std::string_view text)
{
    Number number{};
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    auto const isWhole = error == std::errc() && end == text.data() + text.size();
    return isWhole ? std::optional(number) : std::nullopt;
}

/// UTC.
Seconds secondsOf(int year, unsigned month, unsigned day, std::chrono::seconds timeOfDay)
{
    std::chrono::year_month_day const date{std::chrono::year(year), std::chrono::month(month), std::chrono::day(day)};
    if (!date.ok())
        return std::nullopt;
    return (std::chrono::sys_days(date).time_since_epoch() + timeOfDay).count();
}

/// "12:34" or "12:34:56", with a fraction that is left out.
std::optional<std::chrono::seconds> timeOfDayIn(std::string_view text)
{
    text = text.substr(0, text.find('.'));
    std::chrono::seconds sum{};
    constexpr std::array units{std::chrono::seconds(3600), std::chrono::seconds(60), std::chrono::seconds(1)};
    for (auto const unit : units) {
        auto const number = numberIn<unsigned>(text.substr(0, text.find(':')));
        if (!number || *number > 60)
            return std::nullopt;
        sum += unit * *number;
        if (!text.contains(':'))
            return sum;
        text.remove_prefix(text.find(':') + 1);
    }
    return std::nullopt;
}

/// "2024-01-31"
Seconds dateAndTime(std::string_view date, std::string_view time)
{
    auto const timeOfDay = timeOfDayIn(time);
    auto const first = date.find('-', 1); // a year may be negative
    auto const second = first == std::string_view::npos ? first : date.find('-', first + 1);
    if (!timeOfDay || second == std::string_view::npos)
        return std::nullopt;
    auto const year = numberIn<int>(date.substr(0, first));
    auto const month = numberIn<unsigned>(date.substr(first + 1, second - first - 1));
    auto const day = numberIn<unsigned>(date.substr(second + 1));
    return year && month && day ? secondsOf(*year, *month, *day, *timeOfDay) : std::nullopt;
}

std::optional<unsigned> monthOf(std::string_view name)
{
    constexpr std::string_view names = "JanFebMarAprMayJunJulAugSepOctNovDec";
    auto const place = name.size() == 3 ? names.find(name) : std::string_view::npos;
    return place < names.size() && place % 3 == 0 ? std::optional(static_cast<unsigned>(place / 3 + 1)) : std::nullopt;
}

/// "Jan 31 2019", or "Jan 31 12:34" of the year that is nearest to now.
Seconds shortDate(std::string_view month, std::string_view day, std::string_view yearOrTime,
                  std::chrono::system_clock::time_point now)
{
    auto const inYear = monthOf(month);
    auto const ofMonth = numberIn<unsigned>(day);
    if (!inYear || !ofMonth)
        return std::nullopt;
    if (auto const year = numberIn<int>(yearOrTime))
        return secondsOf(*year, *inYear, *ofMonth, {});
    auto const timeOfDay = yearOrTime.contains(':') ? timeOfDayIn(yearOrTime) : std::nullopt;
    if (!timeOfDay)
        return std::nullopt;
    auto const today = std::chrono::floor<std::chrono::days>(now);
    auto const thisYear = static_cast<int>(std::chrono::year_month_day(today).year());
    auto const here = std::chrono::floor<std::chrono::seconds>(now).time_since_epoch().count();
    Seconds nearest;
    for (auto const year : {thisYear, thisYear - 1, thisYear + 1}) {
        auto const time = secondsOf(year, *inYear, *ofMonth, *timeOfDay);
        if (time && (!nearest || std::abs(*time - here) < std::abs(*nearest - here)))
            nearest = time;
    }
    return nearest;
}

/// A line end in a name is written as in the language C, and bytes without a sign of their own as three octal digits.
std::string unescaped(std::string_view name)
{
    constexpr std::string_view letters = "abfnrtv";
    constexpr std::string_view meanings = "\a\b\f\n\r\t\v";
    if (!name.contains('\\'))
        return std::string(name);
    std::string plain;
    for (std::size_t index = 0; index < name.size(); ++index) {
        auto const letter =
            name[index] == '\\' && index + 1 < name.size() ? letters.find(name[index + 1]) : std::string_view::npos;
        if (letter != std::string_view::npos) {
            plain += meanings[letter];
            ++index;
        } else if (name[index] == '\\') {
            auto const length = name.substr(index + 1).starts_with('\\') ? std::size_t{2} : std::size_t{4};
            plain += ArchiveListing::unescape(name.substr(index, length));
            index += std::min(length, name.size() - index) - 1;
        } else {
            plain += name[index];
        }
    }
    return plain;
}

constexpr std::string_view beforeHardTarget = " link to ";

/// Behind the name of a link stands what it leads to.
std::string_view withoutTarget(std::string_view name, char kind)
{
    if (kind == 'l')
        return name.substr(0, name.find(" -> "));
    return kind == 'h' ? name.substr(0, name.find(beforeHardTarget)) : name;
}

struct Line {
    char kind;
    std::int64_t size = 0;
    Seconds time;
    std::string_view name; ///< as it is written
};

/// Of a hard link; empty for another member.
std::string targetOf(Line const &line)
{
    auto const place = line.kind == 'h' ? line.name.find(beforeHardTarget) : std::string_view::npos;
    if (place == std::string_view::npos)
        return {};
    return ArchiveListing::normalise(unescaped(line.name.substr(place + beforeHardTarget.size())));
}

void add(ArchiveMembers &members, Line const &line)
{
    auto name = unescaped(withoutTarget(line.name, line.kind));
    ArchiveEntry entry{.path = {},
                       .isDirectory = line.kind == 'd' || name.ends_with('/'),
                       .mtime = static_cast<double>(line.time.value_or(0))};
    entry.size = entry.isDirectory ? 0 : line.size;
    members.beginWithDot = members.beginWithDot || name.starts_with(withDot);
    entry.path = ArchiveListing::normalise(std::move(name));
    if (entry.path.empty())
        return;
    if (auto target = targetOf(line); !target.empty())
        members.hardLinks.push_back({entry.path, std::move(target)});
    members.entries.push_back(std::move(entry));
}

/// What is behind the one blank that follows the fields.
std::string_view nameBehind(std::string_view rest)
{
    return rest.substr(std::min<std::size_t>(rest.size(), 1));
}

std::optional<Line> gnuLine(std::string_view line)
{
    auto const mode = takeField(line);
    takeField(line); // the owner
    auto const size = numberIn<std::int64_t>(takeField(line));
    auto const date = takeField(line);
    auto const time = dateAndTime(date, takeField(line));
    if (mode.empty() || !time)
        return std::nullopt;
    return Line{.kind = mode.front(), .size = size.value_or(0), .time = time, .name = nameBehind(line)};
}

std::optional<Line> bsdLine(std::string_view line, std::chrono::system_clock::time_point now)
{
    auto const mode = takeField(line);
    for (int ignored = 0; ignored < 3; ++ignored)
        takeField(line); // links, user, group
    auto const size = numberIn<std::int64_t>(takeField(line));
    auto const month = takeField(line);
    auto const day = takeField(line);
    auto const time = shortDate(month, day, takeField(line), now);
    if (mode.empty() || !time)
        return std::nullopt;
    return Line{.kind = mode.front(), .size = size.value_or(0), .time = time, .name = nameBehind(line)};
}

} // namespace

ArchiveMembers parseGnuTar(std::string_view text)
{
    ArchiveMembers members;
    eachLine(text, [&](std::string_view line) {
        if (auto const read = gnuLine(line))
            add(members, *read);
    });
    return members;
}

ArchiveMembers parseBsdTar(std::string_view text, std::chrono::system_clock::time_point now)
{
    ArchiveMembers members;
    eachLine(text, [&](std::string_view line) {
        if (auto const read = bsdLine(line, now))
            add(members, *read);
    });
    return members;
}

ArchiveMembers parseSevenZip(std::string_view text)
{
    constexpr std::string_view key = "Modified = ";
    constexpr std::string_view wholeSeconds = "0000-00-00 00:00:00";
    std::string plain;
    plain.reserve(text.size());
    eachLine(text, [&](std::string_view line) {
        if (line.starts_with(key) && line.substr(key.size()).contains('.'))
            line = line.substr(0, key.size() + wholeSeconds.size());
        plain.append(line).append(1, '\n');
    });
    return {.entries = ArchiveListing::parse7z(plain)};
}

} // namespace tw::DatedListing
