#include "tests/e2e/XServer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <fstream>
#include <iterator>
#include <set>
#include <stdexcept>

namespace tw::test {

namespace {

/// The fields of the X window dump that Xvfb keeps its screen in: 32 bits each, most significant byte first.
enum class DumpField : std::size_t { headerBytes = 0, width = 4, height = 5, bytesPerLine = 12, colormapEntries = 19 };

constexpr std::size_t bytesPerColormapEntry = 12;

std::size_t fieldOf(std::string const &dump, DumpField field)
{
    std::size_t value = 0;
    for (std::size_t byte = 0; byte < 4; ++byte)
        value = value << 8U | static_cast<unsigned char>(dump.at(static_cast<std::size_t>(field) * 4 + byte));
    return value;
}

std::uint32_t pixelAt(std::string const &dump, std::size_t offset)
{
    auto const byte = [&](std::size_t index) {
        return std::uint32_t{static_cast<unsigned char>(dump.at(offset + index))};
    };
    return byte(2) << 16U | byte(1) << 8U | byte(0);
}

} // namespace

std::size_t Picture::colorsBetween(int from, int to) const
{
    std::set<std::uint32_t> colors;
    for (int y = 0; y < height; ++y) {
        auto const row = pixels.begin() + std::ptrdiff_t{y} * width;
        colors.insert(row + from, row + to);
    }
    return colors.size();
}

XServer::XServer(std::filesystem::path folder)
    : screenFile(folder / "Xvfb_screen0"),
      // The number of a free display comes on standard output, when clients may connect.
      server({"Xvfb", "-displayfd", "1", "-screen", "0", "1280x800x24", "-fbdir", folder.string(), "-nolisten", "tcp"})
{
    name = ":" + server.waitForLine([](std::string const &line) {
        return !line.empty() && std::ranges::all_of(line, [](char c) { return c >= '0' && c <= '9'; });
    });
}

XServer::~XServer()
{
    // Asked, not killed, so that it takes its lock and its socket with it.
    server.signal(SIGTERM);
    server.waitForEnd();
}

void XServer::press(std::string const &chord) const
{
    // The keyboard goes to the window first, where a window manager would have put it.
    focus({"--onlyvisible", "--name", "."});
    outputOf({"xdotool", "key", chord}, {{"DISPLAY", name}});
}

void XServer::pressUnderPointer(std::string const &chord) const
{
    outputOf({"xdotool", "key", chord}, {{"DISPLAY", name}});
}

void XServer::pressIn(std::string const &title, std::string const &chord) const
{
    focus({"--sync", "--onlyvisible", "--name", title});
    outputOf({"xdotool", "key", chord}, {{"DISPLAY", name}});
}

void XServer::focus(std::vector<std::string> const &search) const
{
    std::vector<std::string> arguments{"xdotool", "search"};
    arguments.insert(arguments.end(), search.begin(), search.end());
    arguments.insert(arguments.end(), {"windowfocus", "--sync", "%1"});
    auto const deadline = std::chrono::steady_clock::now() + hangLimit;
    std::string complaint;
    do {
        // It fails if a window that it has found goes before it looks at it, as a menu does that closes.
        Child attempt(arguments, {{"DISPLAY", name}});
        if (attempt.waitForEnd() == 0)
            return;
        complaint = attempt.output();
    } while (std::chrono::steady_clock::now() < deadline);
    ADD_FAILURE() << "no window takes the keyboard:\n" << complaint;
}

std::string XServer::geometryOf(std::string const &title) const
{
    auto const deadline = std::chrono::steady_clock::now() + hangLimit;
    for (;;) {
        Child xdotool({"xdotool", "search", "--onlyvisible", "--name", title, "getwindowgeometry", "--shell"},
                      {{"DISPLAY", name}});
        if (xdotool.waitForEnd() == 0)
            return xdotool.output();
        // It ends when a window goes while it looks at all of them.
        if (std::chrono::steady_clock::now() > deadline)
            throw std::runtime_error("there is no window: " + xdotool.output());
    }
}

XServer::Place XServer::middleOfHalf(std::string const &title, int half) const
{
    auto const words = geometryOf(title);
    auto const value = [&](std::string const &key) { return std::stoi(words.substr(words.find(key) + key.size())); };
    return {value("\nX=") + value("WIDTH=") * (1 + 2 * half) / 4, value("\nY=") + value("HEIGHT=") / 2};
}

void XServer::beginDrag(Place from) const
{
    constexpr int step = 8; // pixels; a drag begins after some steps in one direction
    movePointer(from);
    tool({"mousedown", "1"});
    for (int steps = 1; steps <= 4; ++steps)
        movePointer({from.x, from.y + steps * step});
}

void XServer::movePointer(Place to) const
{
    tool({"mousemove", std::to_string(to.x), std::to_string(to.y)});
}

void XServer::releaseButton() const
{
    tool({"mouseup", "1"});
}

void XServer::tool(std::vector<std::string> arguments) const
{
    arguments.insert(arguments.begin(), "xdotool");
    outputOf(std::move(arguments), {{"DISPLAY", name}});
}

std::string XServer::titles() const
{
    // Without a match its status is 1, which is an answer here.
    Child search({"xdotool", "search", "--onlyvisible", "--name", ".", "getwindowname", "%@"}, {{"DISPLAY", name}});
    search.waitForEnd();
    return search.output();
}

bool XServer::waitForPicture(std::function<bool(Picture const &)> const &isWanted) const
{
    auto const deadline = std::chrono::steady_clock::now() + hangLimit;
    while (std::chrono::steady_clock::now() < deadline) {
        if (isWanted(picture()))
            return true;
    }
    return false;
}

Picture XServer::picture() const
{
    std::ifstream file(screenFile, std::ios::binary);
    std::string const dump{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    Picture picture{.width = static_cast<int>(fieldOf(dump, DumpField::width)),
                    .height = static_cast<int>(fieldOf(dump, DumpField::height)),
                    .pixels = {}};
    auto const bytesPerLine = fieldOf(dump, DumpField::bytesPerLine);
    auto const start =
        fieldOf(dump, DumpField::headerBytes) + fieldOf(dump, DumpField::colormapEntries) * bytesPerColormapEntry;
    for (std::size_t y = 0; y < static_cast<std::size_t>(picture.height); ++y) {
        for (std::size_t x = 0; x < static_cast<std::size_t>(picture.width); ++x)
            picture.pixels.push_back(pixelAt(dump, start + y * bytesPerLine + x * 4));
    }
    return picture;
}

} // namespace tw::test
