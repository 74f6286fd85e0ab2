#include "TWEngine/SSH/SSHCommandLine.h"

#include "TWCore/Shell/ShellLiteral.h"
#include "TWEngine/SSH/DownloadEnd.h"

namespace tw::SSHCommandLine {

namespace {

/// A person may mistype a password. A saved password that was refused once will be refused again.
constexpr auto promptsForUser = "NumberOfPasswordPrompts=3";
constexpr auto promptsForSavedPassword = "NumberOfPasswordPrompts=1";

bool asksUser(RemoteShellOptions const &options)
{
    return !options.loginEnvironment.empty();
}

bool asksForPassword(RemoteShellOptions const &options)
{
    return asksUser(options) || (options.askpassHelper && options.askpassAccount);
}

void addOption(Arguments &arguments, std::string option)
{
    arguments.emplace_back("-o");
    arguments.push_back(std::move(option));
}

std::string inSeconds(std::chrono::duration<double> time)
{
    return std::to_string(std::chrono::duration_cast<std::chrono::seconds>(time).count());
}

/// Of three questions without an answer a client concludes that the host is gone.
void addKeepAlive(Arguments &arguments, std::chrono::seconds interval)
{
    addOption(arguments, "ServerAliveInterval=" + inSeconds(interval));
    addOption(arguments, "ServerAliveCountMax=3");
}

void addSharing(Arguments &arguments, RemoteShellOptions::Sharing sharing, std::string const &controlPath,
                std::chrono::seconds persist)
{
    // The user's own configuration may want compression.
    addOption(arguments, "Compression=no");
    auto const isOurs = sharing == RemoteShellOptions::Sharing::ours;
    addOption(arguments, isOurs ? "ControlMaster=auto" : "ControlMaster=no");
    addOption(arguments, "ControlPath=" + controlPath);
    if (isOurs)
        addOption(arguments, "ControlPersist=" + inSeconds(persist));
}

/// What the user's configuration adds for a person at a terminal has no place between two programs: a terminal changes
/// the bytes, another command answers in place of ours, a forwarding fails because the user's own ssh has its port.
void addCleanSession(Arguments &arguments, RemoteShellOptions const &options)
{
    arguments.emplace_back("-T");
    for (auto const *const option :
         {"RequestTTY=no", "RemoteCommand=none", "PermitLocalCommand=no", "ClearAllForwardings=yes"})
        addOption(arguments, option);
    // An older client refuses to start. IgnoreUnknown would replace the user's own IgnoreUnknown.
    if (!options.knowsSessionType)
        return;
    for (auto const *const option : {"SessionType=default", "StdinNull=no", "ForkAfterAuthentication=no"})
        addOption(arguments, option);
}

Arguments withCommand(Arguments arguments, std::string const &host, std::string command)
{
    arguments.emplace_back("--");
    arguments.push_back(host);
    arguments.push_back(std::move(command));
    return arguments;
}

std::string quotedNative(std::string_view path)
{
    return quotePath(ShellDialect::powershell, path);
}

std::string downloadCommand(ShellDialect dialect, std::string_view path)
{
    if (dialect == ShellDialect::posix)
        return "cat -- " + ShellLiteral::posix(path) + " && echo " +
               std::string(DownloadEnd::words.substr(0, DownloadEnd::words.size() - 1));
    return ShellLiteral::powerShellEncoded("$f=[IO.File]::OpenRead(" + quotedNative(path) +
                                           ")\n"
                                           "$o=[Console]::OpenStandardOutput()\n"
                                           "$f.CopyTo($o); $f.Close(); $o.Flush()");
}

/// In words that the shells of the csh family understand as well. Some systems print spaces before the number.
std::string sizeCheck(std::string const &file, std::int64_t size)
{
    return "wc -c < " + file + " | grep -q '^ *" + std::to_string(size) + "$' && ";
}

std::string uploadCommand(ShellDialect dialect, std::string_view path, std::optional<std::int64_t> size)
{
    if (dialect == ShellDialect::posix) {
        auto const target = ShellLiteral::posix(path);
        auto const temporary = ShellLiteral::posix(uploadTemporary(path));
        return "cat > " + temporary + " && " + (size ? sizeCheck(temporary, *size) : "") + "cat " + temporary + " > " +
               target + " && rm -f " + temporary;
    }
    return ShellLiteral::powerShellEncoded("$t=" + quotedNative(uploadTemporary(path)) +
                                           "\n"
                                           "$i=[Console]::OpenStandardInput()\n"
                                           "$f=[IO.File]::Create($t)\n"
                                           "$i.CopyTo($f); $f.Close()\n"
                                           "Copy-Item -LiteralPath $t -Destination " +
                                           quotedNative(path) +
                                           " -Force\n"
                                           "Remove-Item -LiteralPath $t -Force");
}

Arguments sessionOptions(RemoteShellOptions const &options)
{
    Arguments arguments;
    addOption(arguments, asksForPassword(options) ? "BatchMode=no" : "BatchMode=yes");
    addOption(arguments, "ConnectTimeout=" + inSeconds(options.connectTimeout));
    addKeepAlive(arguments, options.keepAliveInterval);
    if (options.controlPath)
        addSharing(arguments, options.sharing, *options.controlPath, options.controlPersist);
    else if (options.compression)
        arguments.emplace_back("-C");
    if (asksForPassword(options))
        addOption(arguments, asksUser(options) ? promptsForUser : promptsForSavedPassword);
    addCleanSession(arguments, options);
    // For ClientLog. With -v a client that keeps the shared connection would keep our standard error with it.
    addOption(arguments, "LogLevel=DEBUG1");
    return arguments;
}

} // namespace

Arguments session(RemoteShellOptions const &options, std::string const &host, ShellDialect dialect)
{
    return withCommand(sessionOptions(options), host, std::string(remoteCommand(dialect)));
}

Arguments firstSession(RemoteShellOptions const &options, std::string const &host)
{
    return withCommand(sessionOptions(options), host, std::string(firstRemoteCommand()));
}

std::map<std::string, std::string> sessionEnvironment(RemoteShellOptions const &options)
{
    if (!asksForPassword(options))
        return {};
    if (asksUser(options))
        return options.loginEnvironment;
    return {{"SSH_ASKPASS", *options.askpassHelper},
            {"SSH_ASKPASS_REQUIRE", "force"}, // even where there is no display
            {"TW_ASKPASS_ACCOUNT", *options.askpassAccount}};
}

ChildCommand sessionClient(std::string path, Arguments arguments, RemoteShellOptions const &options)
{
    auto client = transferClient(std::move(path), std::move(arguments));
    if (auto const added = sessionEnvironment(options); !added.empty()) {
        client.environment = inheritedEnvironment();
        for (auto const &[name, value] : added)
            client.environment->insert_or_assign(name, value);
    }
    return client;
}

ChildCommand transferClient(std::string path, Arguments arguments)
{
    return {.program = std::move(path),
            .arguments = std::move(arguments),
            .session = ChildCommand::Session::own,
            .end = ChildCommand::End::withProgram};
}

Arguments stopSharing(std::string const &controlPath, std::string const &host)
{
    return {"-O", "stop", "-o", "ControlPath=" + controlPath, "--", host};
}

Arguments transportOptions(RemoteShellOptions const &options, std::optional<std::string> const &controlPath)
{
    Arguments arguments;
    addOption(arguments, "BatchMode=yes");
    addOption(arguments, "ConnectTimeout=" + inSeconds(options.connectTimeout));
    addKeepAlive(arguments, options.keepAliveInterval);
    if (controlPath)
        addSharing(arguments, options.sharing, *controlPath, RemoteShellOptions().controlPersist);
    addCleanSession(arguments, options);
    return arguments;
}

Arguments script(Arguments transportOptions, std::string const &host)
{
    return withCommand(std::move(transportOptions), host, std::string(remoteCommand(ShellDialect::posix)));
}

Arguments download(Arguments transportOptions, std::string const &host, ShellDialect dialect, std::string_view path)
{
    return withCommand(std::move(transportOptions), host, downloadCommand(dialect, path));
}

Arguments upload(Arguments transportOptions, std::string const &host, ShellDialect dialect, std::string_view path,
                 std::optional<std::int64_t> size)
{
    return withCommand(std::move(transportOptions), host, uploadCommand(dialect, path, size));
}

std::string uploadTemporary(std::string_view path)
{
    return std::string(path) + ".tw-upload";
}

std::string removeUploadTemporary(ShellDialect dialect, std::string_view path)
{
    auto const temporary = uploadTemporary(path);
    if (dialect == ShellDialect::posix)
        return "rm -f " + quote(dialect, temporary);
    return "Remove-Item -LiteralPath " + quotedNative(temporary) + " -Force -ErrorAction SilentlyContinue";
}

} // namespace tw::SSHCommandLine
