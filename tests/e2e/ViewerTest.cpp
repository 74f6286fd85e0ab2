#include "tests/e2e/HostTest.h"

#include <fstream>

namespace tw::test {

namespace {

/// A file of a host, looked into by keys alone.
class ViewerTest : public HostTest {
protected:
    /// Waits until a viewer has painted a first row that begins so.
    static void expectViewed(Child &program, std::string const &row)
    {
        program.waitForLine(
            [words = " viewer painted " + row](std::string const &line) { return line.contains(words); });
    }
};

TEST_F(ViewerTest, f3LooksIntoAFileOfAHostAndItsEndIsOneKeyAway)
{
    std::ofstream log(remote("zz.log"));
    for (int line = 0; line < 400'000; ++line)
        log << "line " << line << '\n';
    log.close();
    auto program = startWithHost();
    expectBothPainted(program);
    press({"Tab", "End", "F3"});
    expectViewed(program, "line 0");
    auto const title = alias + " — zz.log";
    screen.pressIn(title, "End");
    expectViewed(program, "line 3999");
    screen.pressIn(title, "Home");
    expectViewed(program, "line 0");
    answer(title, {"Escape"});
    expectQuits(program);
}

} // namespace

} // namespace tw::test
