#pragma once

#include "tests/e2e/Child.h"
#include "tests/e2e/XServer.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <functional>
#include <initializer_list>
#include <string>
#include <vector>

namespace tw::test {

/// The program as a user has it: the real binary, a real X server, real keys, real folders.
///
/// What it has on screen is known from its log of the listings that it has painted, and of what strips and sheets say.
///
///     left/alpha/inner/  left/beta/  left/.hidden/  left/file.txt  right/gamma/  home/
class ProgramTest : public testing::Test {
protected:
    ProgramTest();

    /// The path of something in the test's folder.
    std::string at(std::string const &name) const { return folder.path(name); }

    /// Nothing of the session and the settings of the person who runs the test reaches the program.
    virtual Child::Environment environment() const;

    Child start(std::vector<std::string> arguments) const;

    /// The same on `left` and `right`.
    Child startOnBothFolders() const;
    void expectBothFoldersPainted(Child &program) const;

    void press(std::initializer_list<char const *> chords) const;

    /// Answers the question that has this title, and waits until it is gone.
    void answer(std::string const &title, std::initializer_list<char const *> chords) const;

    /// Waits until a pane has painted the listing of `path`.
    static void expectPainted(Child &program, std::string const &path);

    /// Types the same again and again until a pane has painted the listing of `path`. For what takes effect at a time
    /// that cannot be seen from outside; the keys do no harm before it has.
    void pressUntilPainted(Child &program, std::initializer_list<char const *> chords, std::string const &path) const;

    void expectQuits(Child &program) const;

    /// Moves the pointer around a place until something has come of it. Movements that come fast are one for a toolkit,
    /// and a drag that has only just begun is dropped nowhere.
    void moveUntil(XServer::Place place, std::function<bool()> const &holds) const;

    /// For what no program says.
    static void waitUntil(std::function<bool()> const &holds);

    TemporaryFolder const folder;
    XServer const screen{folder.folder("screen")};
};

} // namespace tw::test
