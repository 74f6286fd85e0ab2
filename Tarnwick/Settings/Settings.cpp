#include "Tarnwick/Settings/Settings.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <sstream>
#include <system_error>
#include <utility>

namespace tw::Settings {

namespace {

constexpr double smallestFont = 9;
constexpr double largestFont = 20;

/// from_chars and to_chars know no locale: a setting always has a point.
template <class Number>
std::optional<Number> numberFrom(std::string const &text)
{
    Number number{};
    auto const *const end = text.data() + text.size();
    auto const [stop, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && stop == end ? std::optional(number) : std::nullopt;
}

std::string decimal(double number)
{
    std::array<char, 32> digits; // the longest of the shortest notations has 24
    auto const written = std::to_chars(digits.data(), digits.data() + digits.size(), number);
    return {digits.data(), written.ptr};
}

std::optional<double> fontSizeFrom(std::string const &text)
{
    auto const size = numberFrom<double>(text);
    return size && *size > 0 ? std::optional(std::clamp(*size, smallestFont, largestFont)) : std::nullopt;
}

std::string fontSizeText(double const &size)
{
    return decimal(std::clamp(size, smallestFont, largestFont));
}

/// The stored texts of an enumeration.
template <class T>
struct Choice {
    T value;
    char const *text;
};

template <auto const &choices, class T>
std::optional<T> choiceFrom(std::string const &text)
{
    auto const *const found = std::ranges::find(choices, text, &Choice<T>::text);
    return found != std::end(choices) ? std::optional(found->value) : std::nullopt;
}

template <auto const &choices, class T>
std::string choiceText(T const &value)
{
    return std::ranges::find(choices, value, &Choice<T>::value)->text;
}

template <auto const &choices, class T>
constexpr Setting<T> oneOf(char const *key, T usual)
{
    return {key, usual, &choiceFrom<choices, T>, &choiceText<choices, T>};
}

constexpr Choice<FolderPlacement> placements[] = {
    {FolderPlacement::top, "top"}, {FolderPlacement::bottom, "bottom"}, {FolderPlacement::mixed, "mixed"}};
constexpr Choice<PaneSide> sides[] = {{PaneSide::left, "left"}, {PaneSide::right, "right"}};
constexpr Choice<EditorChoice> editors[] = {{EditorChoice::application, "application"},
                                            {EditorChoice::terminal, "terminal"}};
constexpr Choice<bool> answers[] = {{false, "false"}, {true, "true"}};

std::optional<std::string> sameText(std::string const &text)
{
    return text;
}

std::string text(std::string const &value)
{
    return value;
}

std::optional<std::optional<int>> shareFrom(std::string const &text)
{
    return numberFrom<int>(text);
}

std::string shareText(std::optional<int> const &share)
{
    return share ? std::to_string(*share) : std::string();
}

std::optional<int> delayFrom(std::string const &text)
{
    auto const delay = numberFrom<int>(text);
    return delay && *delay >= 0 ? delay : std::nullopt;
}

std::string delayText(int const &milliseconds)
{
    return std::to_string(milliseconds);
}

/// One name a line: a name of a host has no line end.
std::optional<std::vector<std::string>> hostsFrom(std::string const &text)
{
    std::vector<std::string> hosts;
    std::istringstream lines(text);
    for (std::string name; hosts.size() < mostRecentHosts && std::getline(lines, name);) {
        if (!name.empty())
            hosts.push_back(name);
    }
    return hosts;
}

std::string hostsText(std::vector<std::string> const &hosts)
{
    std::string text;
    for (auto const &name : hosts)
        text += name + '\n';
    return text;
}

} // namespace

Setting<double> const paneFontSize{"tw.paneFontSize", 12, fontSizeFrom, fontSizeText};
Setting<double> const viewerFontSize{"tw.viewerFontSize", 12, fontSizeFrom, fontSizeText};
Setting<std::string> const viewerGeometry{"TarnwickViewer", {}, sameText, text};
Setting<FolderPlacement> const folderPlacement = oneOf<placements>("tw.folderPlacement", FolderPlacement::top);
Setting<PaneSide> const activeSide = oneOf<sides>("tw.activeSide", PaneSide::left);
Setting<std::string> const columns{"tw.columns", {}, sameText, text};
Setting<bool> const autoRefresh = oneOf<answers>("TWAutoRefresh", true);
Setting<EditorChoice> const editor = oneOf<editors>("tw.editor", EditorChoice::application);
Setting<std::string> const windowGeometry{"TarnwickMain", {}, sameText, text};
Setting<std::optional<int>> const leftShare{"tw.split", std::nullopt, shareFrom, shareText};
Setting<bool> const welcomeShown = oneOf<answers>("tw.welcomeShown", false);
Setting<std::string> const toolBar{"TarnwickToolbar2", {}, sameText, text};
Setting<std::vector<std::string>> const recentHosts{"tw.recentHosts", {}, hostsFrom, hostsText};
// Longer than a style's own: over a list that is read with the mouse, tool tips of that delay are in the way.
Setting<int> const toolTipDelay{"NSInitialToolTipDelay", 1400, delayFrom, delayText};

void noteRecentHost(Defaults &defaults, std::string const &name)
{
    auto recent = recentHosts.read(defaults);
    std::erase(recent, name);
    recent.insert(recent.begin(), name);
    recent.resize(std::min(recent.size(), mostRecentHosts));
    recentHosts.write(defaults, recent);
}

} // namespace tw::Settings
