#pragma once

#include "tests/support/ChildProcessTest.h"
#include "tests/support/ResidentShell.h"
#include "tests/support/TemporaryFolder.h"

#include <initializer_list>

namespace tw::test {

/// Tests with a real resident shell that finds only the tools that the test gives it.
class ResidentShellTest : public ChildProcessTest {
protected:
    ResidentShellTest();

    /// Gives the shell these tools of this machine.
    void give(std::initializer_list<std::string_view> names) const;

    /// Gives the shell a script for sh as a tool.
    void give(std::string_view name, std::string_view script) const;

    /// A find without -printf, like those of BSD and macOS.
    void giveFindWithoutPrintf() const;

    /// Starts a shell with the given tools, in `startFolder`, or in the folder of the test if `startFolder` is empty.
    ResidentShell shell(std::size_t budget = 8U << 20U, std::string const &startFolder = {});

    TemporaryFolder folder;

private:
    TemporaryFolder tools;
};

} // namespace tw::test
