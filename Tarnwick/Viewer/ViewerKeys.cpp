#include "Tarnwick/Viewer/ViewerKeys.h"

#include <algorithm>
#include <ranges>
#include <string>

namespace tw {

namespace {

constexpr ViewerKey keys[] = {
    {ViewerAction::close, "Esc F3 Q Ctrl+W", "close the viewer; end a search"},
    {ViewerAction::lineDown, "Down J Return", "one row down"},
    {ViewerAction::lineUp, "Up K", "one row up"},
    {ViewerAction::pageDown, "PgDown Space F", "one page down"},
    {ViewerAction::pageUp, "PgUp Shift+Space B", "one page up"},
    {ViewerAction::start, "Home Ctrl+Home G", "the beginning of the file"},
    {ViewerAction::end, "End Ctrl+End Shift+G", "the end of the file"},
    {ViewerAction::right, "Right", "to the right, where lines are not wrapped"},
    {ViewerAction::left, "Left", "to the left"},
    {ViewerAction::showText, "Ctrl+1 T", "show it as text"},
    {ViewerAction::showHex, "Ctrl+2 H", "show it as a hex dump"},
    {ViewerAction::showImage, "Ctrl+3 I", "show it as an image"},
    {ViewerAction::toggleWrap, "W", "wrap long lines, or do not"},
    {ViewerAction::nextEncoding, "E", "read the text in the next encoding"},
    {ViewerAction::goTo, "Ctrl+G Ctrl+L :", "go to a line, a percentage or an offset"},
    {ViewerAction::find, "/ Ctrl+F F7", "find a text; in a hex dump also bytes, as 48 65"},
    {ViewerAction::findNext, "N Shift+F3", "find it again, further down; the next image of the folder"},
    {ViewerAction::findPrevious, "Shift+N Ctrl+Shift+F3", "find it further up"},
    {ViewerAction::previousFile, "P", "the image before"},
    {ViewerAction::follow, "Shift+F", "follow the end of a file that grows, or do not"},
    {ViewerAction::copy, "Ctrl+C Ctrl+Ins", "copy what is selected"},
    {ViewerAction::bigger, "Ctrl++ Ctrl+=", "larger text; closer to an image"},
    {ViewerAction::smaller, "Ctrl+-", "smaller text; away from an image"},
    {ViewerAction::usualSize, "Ctrl+0 0", "text of the usual size; all of an image"},
    {ViewerAction::actualSize, "1", "an image at its own size"},
};

bool has(ViewerKey const &key, std::string_view chord)
{
    return std::ranges::any_of(key.chords | std::views::split(' '),
                               [chord](auto const &each) { return std::string_view(each) == chord; });
}

std::optional<ViewerAction> actionWith(std::string const &chord)
{
    auto const *const found = std::ranges::find_if(keys, [&](ViewerKey const &key) { return has(key, chord); });
    return found == std::end(keys) ? std::nullopt : std::optional(found->action);
}

bool isLetter(std::string const &sign)
{
    return sign.size() == 1 && sign.front() >= 'A' && sign.front() <= 'Z';
}

} // namespace

std::span<ViewerKey const> viewerKeys()
{
    return keys;
}

std::optional<ViewerAction> viewerActionOf(KeyStroke stroke)
{
    if (stroke.sign == "Enter") // that of the keypad
        stroke.sign = "Return";
    if (auto const action = actionWith(spelled(stroke)))
        return action;
    if (!stroke.shift || stroke.sign.size() != 1 || isLetter(stroke.sign))
        return std::nullopt;
    stroke.shift = false;
    return actionWith(spelled(stroke));
}

} // namespace tw
