#pragma once

#include "TWCore/Provider/HostCommand.h"
#include "TWCore/Shell/ShellDialect.h"
#include "tests/support/ChildProcessTest.h"
#include "tests/support/TemporaryFolder.h"

#include <filesystem>

#include <sys/stat.h>

namespace tw::test {

/// Tests of requests to the resident shell of a host, which is run as that shell runs them, with tools of our choice.
class HostShellTest : public ChildProcessTest {
protected:
    /// From now on the host has nothing but the tools of busybox.
    void useBusybox()
    {
        for (auto const &entry : std::filesystem::directory_iterator(tools.path()))
            std::filesystem::remove(entry.path());
        for (std::string const name :
             {"awk",    "cat",      "chmod", "cp", "chgrp", "cut",  "du",   "find", "head", "ls", "mkdir", "mv",   "od",
              "printf", "readlink", "rm",    "sh", "sort",  "stat", "sync", "tail", "tar",  "tr", "wc",    "xargs"})
            tools.link(name, "/bin/busybox");
        searchPath = tools.path();
    }

    /// The same, without one of them.
    void useBusyboxWithout(std::string const &tool)
    {
        useBusybox();
        std::filesystem::remove(tools.path(tool));
    }

    /// From now on the host has the tools of this machine, and this one in place of its namesake.
    void replaceTool(std::string_view name, std::string_view script)
    {
        auto const path = tools.file(name, "#!/bin/bash\n" + std::string(script));
        ::chmod(path.c_str(), 0755);
        searchPath = tools.path() + ":/usr/bin:/bin";
    }

    /// A stat that knows the options of BSD only. A stand-in: no BSD runs here.
    void useStatOfBSD()
    {
        replaceTool("stat", R"sh(
[ "$1" = -f ] || { echo "stat: illegal option -- c" >&2; exit 1; }
format=$2
shift 2
format=${format//%Mp%Lp/%a} format=${format//%Fm/%.9Y} format=${format//%Xp/%f} format=${format//%z/%s} format=${format//%m/%Y} format=${format//%N/%n}
exec /usr/bin/stat -c "$format" "$@"
)sh");
    }

    /// From now on permissions apply, also if the tests are root's.
    void dropPrivileges() { hasPrivileges = false; }

    CommandResult run(std::string const &request)
    {
        auto environment = inheritedEnvironment();
        environment["PATH"] = searchPath;
        environment["LC_ALL"] = "C";
        ChildCommand command{.program = "/bin/bash",
                             .arguments = {"-s"},
                             .environment = std::move(environment),
                             .input = PipeEnd{},
                             .output = PipeEnd{}};
        if (!hasPrivileges && ::geteuid() == 0) {
            constexpr auto rights = "-dac_override,-dac_read_search,-fowner";
            command.program = "/usr/bin/setpriv";
            command.arguments = {"--bounding-set", rights, "--inh-caps", rights, "--", "/bin/bash", "-s"};
        }
        auto const shell = start(command);
        auto const output = loop.start(restOf(shell, ChildOutput::standard));
        loop.run(shell->write("( eval " + quote(ShellDialect::posix, request) + " ) 2>&1 </dev/null\n"));
        shell->closeInput();
        loop.runUntil([&] { return output.isDone(); });
        auto const status = wait(shell);
        return {.output = output.value(), .status = status.number};
    }

    TemporaryFolder folder; ///< of the host, which is this machine

private:
    TemporaryFolder tools;
    std::string searchPath = "/usr/bin:/bin";
    bool hasPrivileges = true;
};

} // namespace tw::test
