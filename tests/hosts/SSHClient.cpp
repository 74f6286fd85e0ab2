#include "tests/hosts/SSHClient.h"

namespace tw::test {

namespace fs = std::filesystem;

namespace {

constexpr auto realClient = "/usr/bin/ssh";

/// The line that is on record for a host.
std::string knownHostLine(HostAddress const &host, SSHClient::Knowledge knowledge)
{
    auto const name = "[127.0.0.1]:" + std::to_string(host.port) + ' ';
    switch (knowledge) {
    case SSHClient::Knowledge::right:
        return name + host.hostKey + '\n';
    case SSHClient::Knowledge::another:
        // Any other key will do; the user's is at hand.
        return name + contentOf(host.identityFile + ".pub");
    case SSHClient::Knowledge::none:
        break;
    }
    return {};
}

/// In one step: an ssh that is starting reads the old file or the new one.
void replaceFile(TemporaryFolder const &folder, std::string const &path, std::string const &content)
{
    auto const next = folder.file("next", content);
    fs::rename(next, path);
}

} // namespace

SSHClient::SSHClient()
    : configurationFile(folder.folder("home/.ssh") + "/config"),
      wrapper(
          folder.file("ssh", "#!/bin/sh\nexec " + std::string(realClient) + " -F '" + configurationFile + "' \"$@\"\n"))
{
    fs::permissions(wrapper, fs::perms::owner_all);
    fs::permissions(folder.path("home/.ssh"), fs::perms::owner_all);
    replaceFile(folder, configurationFile, configuration());
}

void SSHClient::add(std::string const &alias, HostAddress const &host, Knowledge knowledge, std::string const &more)
{
    hosts.insert_or_assign(alias, "Host " + alias + "\n    HostName 127.0.0.1\n    Port " + std::to_string(host.port) +
                                      "\n    IdentityFile \"" + host.identityFile + "\"\n    UserKnownHostsFile \"" +
                                      knownHostsFile(alias) + "\"\n" + more + "\n\n");
    replaceFile(folder, knownHostsFile(alias), knownHostLine(host, knowledge));
    replaceFile(folder, configurationFile, configuration());
}

/// One for each name: two names of one host may know different keys.
std::string SSHClient::knownHostsFile(std::string const &alias) const
{
    return folder.path("home/.ssh/known_hosts_" + alias);
}

std::string SSHClient::configuration() const
{
    std::string text;
    for (auto const &[alias, lines] : hosts)
        text += lines;
    // A loaded machine may take longer to answer than the ten seconds of a user who sets nothing.
    text += "Host *\n"
            "    ConnectTimeout 60\n"
            "    IdentitiesOnly yes\n"
            "    IdentityAgent none\n"
            "    StrictHostKeyChecking yes\n"
            "    GlobalKnownHostsFile /dev/null\n"
            "    UpdateHostKeys no\n";
    return text;
}

} // namespace tw::test
