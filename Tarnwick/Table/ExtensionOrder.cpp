#include "Tarnwick/Table/ExtensionOrder.h"

#include "TWCore/Check.h"
#include "TWCore/Model/DisplayText.h"
#include "Tarnwick/Format/Fmt.h"

#include <unicode/coll.h>

#include <algorithm>
#include <numeric>
#include <unordered_map>

namespace tw {

namespace {

/// The locale that texts are compared by. The "C" locale reaches ICU as a variant of English that orders by character
/// code and tells the cases apart, which is no order for people.
icu::Locale comparisonLocale()
{
    auto const &locale = icu::Locale::getDefault();
    return std::string_view(locale.getVariant()) == "POSIX" ? icu::Locale::getRoot() : locale;
}

std::unique_ptr<icu::Collator> caseInsensitiveCollator()
{
    auto status = U_ZERO_ERROR;
    std::unique_ptr<icu::Collator> collator(icu::Collator::createInstance(comparisonLocale(), status));
    check(U_SUCCESS(status) != 0 && collator, "ICU came without its collation data");
    collator->setStrength(icu::Collator::SECONDARY); // accents count, case does not
    return collator;
}

/// Bytes that order as the collator orders the text.
std::string sortKeyBytes(icu::Collator const &collator, std::string const &text)
{
    auto const wide = icu::UnicodeString::fromUTF8(text);
    std::string key(static_cast<std::size_t>(collator.getSortKey(wide, nullptr, 0)), '\0');
    collator.getSortKey(wide, reinterpret_cast<std::uint8_t *>(key.data()), static_cast<std::int32_t>(key.size()));
    return key;
}

/// For each of the different texts, its place among them.
std::vector<std::uint32_t> placesOf(std::vector<std::string> const &texts)
{
    auto const collator = caseInsensitiveCollator();
    std::vector<std::string> keys;
    keys.reserve(texts.size());
    for (auto const &text : texts)
        keys.push_back(sortKeyBytes(*collator, text));
    std::vector<std::uint32_t> sorted(texts.size());
    std::iota(sorted.begin(), sorted.end(), 0U);
    std::ranges::sort(sorted, [&](std::uint32_t a, std::uint32_t b) {
        auto const order = keys[a].compare(keys[b]);
        return order != 0 ? order < 0 : a < b;
    });
    std::vector<std::uint32_t> places(texts.size());
    for (std::uint32_t place = 0; place < sorted.size(); ++place)
        places[sorted[place]] = place;
    return places;
}

} // namespace

std::vector<std::uint32_t> extensionPlaces(std::span<std::uint32_t const> rows, DirectorySnapshot const &snapshot)
{
    std::vector<std::string> texts;
    std::unordered_map<std::string, std::uint32_t> textNumbers;
    std::unordered_map<std::string_view, std::uint32_t> numbers; // by exact bytes, so that few are made into a text
    std::vector<std::uint32_t> places;
    places.reserve(rows.size());
    for (auto const row : rows) {
        auto const &entry = snapshot.entries()[row];
        auto const extension =
            Fmt::splitExtension(snapshot.nameBytes(entry), Fmt::IsDirectory{entry.isDirectory()}).extension;
        auto const [known, isNew] = numbers.try_emplace(extension, 0);
        if (isNew) {
            auto text = repaired(extension);
            auto const [number, isNewText] = textNumbers.try_emplace(text, static_cast<std::uint32_t>(texts.size()));
            if (isNewText)
                texts.push_back(std::move(text));
            known->second = number->second;
        }
        places.push_back(known->second);
    }
    auto const placeOfText = placesOf(texts);
    for (auto &place : places)
        place = placeOfText[place];
    return places;
}

} // namespace tw
