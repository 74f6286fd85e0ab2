#include "tests/support/ResidentShellTest.h"

#include <sys/stat.h>
#include <unistd.h>

namespace tw::test {

namespace {

std::string locationOf(std::string_view tool)
{
    for (std::string const folder : {"/usr/bin/", "/bin/"}) {
        auto path = folder + std::string(tool);
        if (access(path.c_str(), X_OK) == 0)
            return path;
    }
    throw std::runtime_error("this machine has no " + std::string(tool));
}

} // namespace

ResidentShellTest::ResidentShellTest()
{
    give({"head", "tail", "stat", "grep", "tar", "cat"});
}

void ResidentShellTest::give(std::initializer_list<std::string_view> names) const
{
    for (auto const name : names)
        tools.link(name, locationOf(name));
}

void ResidentShellTest::give(std::string_view name, std::string_view script) const
{
    auto const path = tools.path(name);
    unlink(path.c_str());
    tools.file(name, "#!/bin/sh\n" + std::string(script) + "\n");
    if (chmod(path.c_str(), 0755) != 0)
        throw std::runtime_error("a tool could not be made");
}

void ResidentShellTest::giveFindWithoutPrintf() const
{
    give("find", R"(for argument; do
    [ "$argument" != -printf ] || exit 1
done
exec )" + locationOf("find") +
                     R"( "$@")");
}

ResidentShell ResidentShellTest::shell(std::size_t budget, std::string const &startFolder)
{
    return {*io,
            loop,
            {.path = tools.path(), .startFolder = startFolder.empty() ? folder.path() : startFolder, .budget = budget}};
}

} // namespace tw::test
