#include "tests/e2e/HostTest.h"

#include <cstdlib>

namespace tw::test {

namespace {

/// Archives as a user enters them: by keys alone.
class ArchiveTest : public HostTest {
protected:
    /// remote/third.tar.gz with docs/one and docs/two
    ArchiveTest()
    {
        folder.folder("packed/docs");
        folder.file("packed/docs/one", "1");
        folder.file("packed/docs/two", "22");
        auto const command = "tar -czf '" + remote("third.tar.gz") + "' -C '" + at("packed") + "' docs";
        EXPECT_EQ(std::system(command.c_str()), 0); // NOLINT(concurrency-mt-unsafe)
    }

    static bool hasContent(std::string const &path, std::string const &content)
    {
        return std::filesystem::exists(path) && contentOf(path) == content;
    }
};

TEST_F(ArchiveTest, aFileComesOutOfAnArchiveOnAHostByKeysAlone)
{
    auto program = startWithHost();
    expectBothPainted(program);
    press({"Tab", "End", "Return"});
    expectPainted(program, "/");
    press({"End", "Return"});
    expectPainted(program, "/docs");
    press({"End", "F5"});
    waitUntil([this] { return hasContent(at("left/two"), "22"); });
    EXPECT_FALSE(std::filesystem::exists(at("left/one")));
    press({"BackSpace", "Home", "Return"});
    expectPainted(program, remote());
    expectQuits(program);
}

} // namespace

} // namespace tw::test
