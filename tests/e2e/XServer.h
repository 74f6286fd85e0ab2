#pragma once

#include "tests/e2e/Child.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace tw::test {

/// What is on a screen: the pixels, row by row.
struct Picture {
    int width = 0;
    int height = 0;
    std::vector<std::uint32_t> pixels; ///< 0x00RRGGBB

    /// How many different colours there are in the columns [from, to).
    std::size_t colorsBetween(int from, int to) const;

    friend bool operator==(Picture const &, Picture const &) = default;
};

/// An X server of the test's own, without hardware, a window manager or other programs.
///
/// Lifetime: it and its display end with the object.
class XServer {
public:
    /// `folder` is where it keeps its screen; it exists, and outlives the server.
    explicit XServer(std::filesystem::path folder);
    ~XServer();

    /// For the environment of its clients, as ":1".
    std::string const &display() const noexcept { return name; }

    /// Types a key or a chord into the visible window, as a keyboard does: "Return", "ctrl+q".
    void press(std::string const &chord) const;

    /// The same into the window under the pointer, which need not have a title.
    void pressUnderPointer(std::string const &chord) const;

    /// The same into the window of a title, as soon as it is visible.
    void pressIn(std::string const &title, std::string const &chord) const;

    struct Place {
        int x = 0;
        int y = 0;
    };

    /// The middle of the left or the right half of the window of a title.
    Place middleOfHalf(std::string const &title, int half) const;

    /// Presses the left mouse button, and moves as a drag begins.
    void beginDrag(Place from) const;
    void movePointer(Place to) const;
    void releaseButton() const;

    /// The titles of the visible windows, one a line.
    std::string titles() const;

    /// Looks at the screen until `isWanted` holds of it. False if it never does.
    bool waitForPicture(std::function<bool(Picture const &)> const &isWanted) const;

    /// What is on the screen now.
    Picture picture() const;

private:
    void tool(std::vector<std::string> arguments) const;

    /// What xdotool says of the place and the size of the window that has this title.
    std::string geometryOf(std::string const &title) const;

    /// Gives the keyboard to the first window that xdotool finds with `search`.
    void focus(std::vector<std::string> const &search) const;

    std::filesystem::path const screenFile;
    Child server;
    std::string name;
};

} // namespace tw::test
