#pragma once

#include "tests/support/ChildProcessTest.h"
#include "tests/support/ResidentShell.h"
#include "tests/support/TemporaryFolder.h"

#include <initializer_list>

namespace tw::test {

/// Tests that talk to a real resident shell, whose tools are those that the test gives it.
class ResidentShellTest : public ChildProcessTest {
protected:
    ResidentShellTest();

    /// Lets the shell find these tools of this machine.
    void give(std::initializer_list<std::string_view> names) const;

    /// Lets the shell find a program of the test's own, a script for sh.
    void give(std::string_view name, std::string_view script) const;

    /// A find that does not know -printf, as that of BSD and of macOS.
    void giveFindWithoutPrintf() const;

    /// A shell with the tools that were given. `startFolder` is the test's folder if it is empty.
    ResidentShell shell(std::size_t budget = 8U << 20U, std::string const &startFolder = {});

    TemporaryFolder folder;

private:
    TemporaryFolder tools;
};

} // namespace tw::test
