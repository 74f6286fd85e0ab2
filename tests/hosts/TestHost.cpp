#include "tests/hosts/TestHost.h"

#include "TWEngine/Runtime/ChildProcess.h"
#include "TWEngine/Runtime/EngineRuntime.h"
#include "tests/hosts/Loopback.h"
#include "tests/hosts/ProcessTree.h"
#include "tests/hosts/WaitFor.h"

#include <algorithm>
#include <stdexcept>
#include <thread>

#include <shadow.h>
#include <signal.h>
#include <unistd.h>

namespace tw::test {

namespace {

/// By its whole path, because it starts itself anew for each connection.
constexpr auto server = "/usr/sbin/sshd";

/// What its own processes are named; newer versions have several, such as sshd-session.
bool belongsToServer(ProcessRecord const &process)
{
    return process.name.starts_with("sshd");
}

/// Without PAM sshd turns away an account whose password is locked, as root's is on many machines.
bool ownAccountIsLocked()
{
    auto const *entry = ::geteuid() == 0 ? ::getspnam("root") : nullptr;
    return entry != nullptr && entry->sp_pwdp != nullptr && entry->sp_pwdp[0] == '!';
}

std::string inQuotes(std::string const &text)
{
    return '"' + text + '"';
}

} // namespace

TestHost::TestHost(EngineRuntime &runtime) : TestHost(runtime, Options()) {}

TestHost::TestHost(EngineRuntime &runtime, Options wanted)
    : engine(runtime),
      options(std::move(wanted)),
      reservation(reserveLoopbackPort()),
      hostKey(KeyPair::generate(engine.io(), folder.path("host_key"))),
      userKey(KeyPair::generate(engine.io(), folder.path("user_key")))
{
    if (::geteuid() == 0)
        separation.emplace();
    folder.folder("home");
    folder.folder("tmp");
    folder.file("banner", options.banner);
    auto const script = folder.file("login_script", options.loginScript);
    std::filesystem::permissions(script, std::filesystem::perms::owner_all);
    folder.file("sshd_config", configuration());
    setLogin(options.login);
    start();
}

TestHost::~TestHost()
{
    stop();
}

HostAddress TestHost::address() const
{
    return {.port = portOf(reservation), .hostKey = hostKey.publicKey, .identityFile = userKey.privateFile};
}

void TestHost::setLogin(Login login)
{
    folder.file("authorized_keys", login == Login::accepted ? userKey.publicKey + '\n' : std::string());
}

void TestHost::start()
{
    if (listener)
        return;
    auto const before = output.size();
    auto started =
        ChildProcess::start(engine.io(), {.program = TARNWICK_SESSION_KEEPER,
                                          .arguments = {server, "-D", "-e", "-f", folder.path("sshd_config")},
                                          .environment = Environment{{"PATH", "/usr/bin:/bin"}},
                                          .error = PipeEnd()});
    if (!started)
        throw std::move(started.error());
    output.collect(engine, *started);
    // It says so when connections are taken, and not before.
    if (!output.waitFor("Server listening on", before))
        throw std::runtime_error("sshd did not start: " + output.text());
    listener = std::move(*started);
}

void TestHost::cut()
{
    if (!listener)
        return;
    for (;;) {
        auto sessions = descendantsOf(listener->processId());
        std::erase_if(sessions, [](auto const &process) { return !belongsToServer(process) || process.hasEnded(); });
        if (sessions.empty())
            return;
        std::ranges::for_each(sessions, killAndWait);
    }
}

void TestHost::stop()
{
    if (!listener)
        return;
    while (!isFrozenWithNothingBelow())
        endEverythingBelow();
    listener->kill();
    waitFor(listener->wait());
    output.waitForEnd();
    listener = nullptr;
}

std::size_t TestHost::connections() const
{
    if (!listener)
        return 0;
    auto const below = descendantsOf(listener->processId());
    return static_cast<std::size_t>(std::ranges::count_if(below, [this](ProcessRecord const &process) {
        return process.parent == listener->processId() && belongsToServer(process) && !process.hasEnded();
    }));
}

/// Those that have ended are waited for as well: the server collects them, and nobody else may do so.
void TestHost::endEverythingBelow()
{
    ::kill(listener->processId(), SIGCONT);
    for (;;) {
        auto const below = descendantsOf(listener->processId());
        if (below.empty())
            return;
        std::ranges::for_each(below, killAndWait);
        std::this_thread::yield();
    }
}

/// Frozen, it can take no connection between the look and its end.
bool TestHost::isFrozenWithNothingBelow()
{
    auto const id = listener->processId();
    ::kill(id, SIGSTOP);
    for (;;) {
        auto const record = recordOf(id);
        if (!record || record->hasEnded() || record->state == 'T')
            break;
        std::this_thread::yield();
    }
    return descendantsOf(id).empty();
}

std::string TestHost::configuration() const
{
    auto text = "ListenAddress 127.0.0.1\n"
                "Port " +
                std::to_string(portOf(reservation)) +
                "\n"
                "PidFile none\n"
                "HostKey " +
                inQuotes(hostKey.privateFile) +
                "\n"
                "AuthorizedKeysFile " +
                inQuotes(folder.path("authorized_keys")) +
                "\n"
                "SetEnv " +
                inQuotes("HOME=" + home()) + ' ' + inQuotes("TMPDIR=" + temporary()) +
                "\n"
                // The temporary folder need not be what sshd thinks is safe.
                "StrictModes no\n"
                "PermitRootLogin prohibit-password\n"
                "PasswordAuthentication no\n"
                "KbdInteractiveAuthentication no\n"
                // What the real user has set up for logins of his own.
                "PermitUserRC no\n"
                "PrintMotd no\n"
                "UseDNS no\n"
                "Subsystem sftp internal-sftp\n"
                // Many clients at once are a test and not an attack.
                "MaxStartups 1000\n"
                "LogLevel VERBOSE\n";
    text += ownAccountIsLocked() ? "UsePAM yes\n" : "UsePAM no\n";
    if (!options.banner.empty())
        text += "Banner " + inQuotes(folder.path("banner")) + '\n';
    if (!options.loginScript.empty())
        text += "ForceCommand '" + folder.path("login_script") + "'\n";
    return text;
}

} // namespace tw::test
