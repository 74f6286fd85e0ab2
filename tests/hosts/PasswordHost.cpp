#include "tests/hosts/PasswordHost.h"

#include "TWEngine/Runtime/ChildProcess.h"
#include "TWEngine/Runtime/EngineRuntime.h"
#include "tests/hosts/ProcessTree.h"
#include "tests/hosts/WaitFor.h"

#include <algorithm>
#include <fstream>
#include <stdexcept>

namespace tw::test {

namespace {

constexpr std::string_view listening = "Server listening on port ";

} // namespace

PasswordHost::PasswordHost(EngineRuntime &runtime, Options options)
    : hostKey(KeyPair::generate(runtime.io(), folder.path("host_key"))),
      userKey(KeyPair::generate(runtime.io(), folder.path("user_key")))
{
    auto started =
        ChildProcess::start(runtime.io(), {.program = TARNWICK_SESSION_KEEPER,
                                           .arguments = {TARNWICK_PASSWORD_HOST, hostKey.privateFile, options.password,
                                                         options.prompt, folder.path("tries")},
                                           .error = PipeEnd()});
    if (!started)
        throw std::move(started.error());
    server = std::move(*started);
    output.collect(runtime, server);
    if (!output.waitFor(".\n", 0))
        throw std::runtime_error("password_host did not start: " + output.text());
    auto const text = output.text();
    port = static_cast<std::uint16_t>(std::stoi(text.substr(text.find(listening) + listening.size())));
}

PasswordHost::~PasswordHost()
{
    auto const below = descendantsOf(server->processId());
    server->kill();
    waitFor(server->wait());
    std::ranges::for_each(below, killAndWait);
    output.waitForEnd();
}

HostAddress PasswordHost::address() const
{
    return {.port = port, .hostKey = hostKey.publicKey, .identityFile = userKey.privateFile};
}

std::vector<std::string> PasswordHost::tries() const
{
    std::vector<std::string> found;
    std::ifstream lines(folder.path("tries"));
    for (std::string line; std::getline(lines, line);)
        found.push_back(line);
    return found;
}

std::string passwordProgram()
{
    return TARNWICK_PASSWORD_PROGRAM;
}

} // namespace tw::test
