#include "Tarnwick/Viewer/ViewerTarget.h"

#include "TWCore/Model/Trimmed.h"

#include <charconv>
#include <limits>

namespace tw {

namespace {

std::optional<std::int64_t> numberFrom(std::string_view digits, int base)
{
    std::int64_t number = 0;
    auto const *const end = digits.data() + digits.size();
    auto const [stop, error] = std::from_chars(digits.data(), end, number, base);
    return error == std::errc() && stop == end && number >= 0 ? std::optional(number) : std::nullopt;
}

std::optional<std::int64_t> unitOf(char letter)
{
    switch (letter) {
    case 'k':
    case 'K':
        return std::int64_t(1) << 10U;
    case 'm':
    case 'M':
        return std::int64_t(1) << 20U;
    case 'g':
    case 'G':
        return std::int64_t(1) << 30U;
    case 't':
    case 'T':
        return std::int64_t(1) << 40U;
    default:
        return std::nullopt;
    }
}

} // namespace

std::optional<ViewerTarget> ViewerTarget::parse(std::string_view typed, ViewerMode mode)
{
    typed = trimmed(typed);
    auto const made = [](Unit unit, std::optional<std::int64_t> number) {
        return number ? std::optional(ViewerTarget{unit, *number}) : std::nullopt;
    };
    if (typed.empty())
        return std::nullopt;
    if (typed.starts_with("0x") || typed.starts_with("0X"))
        return made(Unit::offset, numberFrom(typed.substr(2), 16));
    if (typed.starts_with('@'))
        return made(Unit::offset, numberFrom(typed.substr(1), 10));
    auto const front = typed.substr(0, typed.size() - 1);
    if (typed.ends_with('%')) {
        auto const percent = numberFrom(front, 10);
        return percent && *percent <= 100 ? made(Unit::percent, percent) : std::nullopt;
    }
    if (auto const unit = unitOf(typed.back())) {
        auto const count = numberFrom(front, 10);
        auto const fits = count && *count <= std::numeric_limits<std::int64_t>::max() / *unit;
        return fits ? made(Unit::offset, *count * *unit) : std::nullopt;
    }
    return made(mode == ViewerMode::hex ? Unit::offset : Unit::line, numberFrom(typed, 10));
}

} // namespace tw
