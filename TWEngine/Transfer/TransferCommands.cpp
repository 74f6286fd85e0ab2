#include "TWEngine/Transfer/TransferCommands.h"

#include "TWCore/Model/WindowsPath.h"
#include "TWCore/Shell/EndableCommand.h"
#include "TWCore/Shell/FileCommands.h"
#include "TWCore/Shell/ShellLiteral.h"

#include <algorithm>

namespace tw::TransferCommands {

namespace {

using Arguments = std::vector<std::string>;

/// The smallest limit of a Windows shell is 8191 characters for a command line. A byte of a name costs up to eight of
/// them: two of a quote, in UTF-16, in Base64.
constexpr std::size_t maxWindowsBytes = 900;

/// Linux takes a quarter of the stack's limit for arguments and environment, usually 2 MiB.
constexpr std::size_t maxArgumentBytes = std::size_t{512} * 1024;

/// GNU tar takes "\\n" in a name for a line end without it. No other tar reads it where it stands, in TAR_OPTIONS.
constexpr auto namesAsTheyAre = "--no-unquote";

/// The tar of the BSDs takes "@name" for an archive whose members it adds.
std::string argumentOf(std::string const &name)
{
    return name.starts_with('@') ? "./" + name : name;
}

Arguments packArguments(std::string folder, Names names)
{
    Arguments arguments{"-cf", "-", "-C", std::move(folder), "--"};
    std::ranges::transform(names, std::back_inserter(arguments), argumentOf);
    return arguments;
}

ChildCommand programOfOurs(std::string path, Arguments arguments)
{
    return {.program = std::move(path),
            .arguments = std::move(arguments),
            .error = PipeEnd{},
            .session = ChildCommand::Session::own,
            .end = ChildCommand::End::withProgram};
}

std::string octalEscapes(std::string_view text)
{
    std::string escaped;
    for (auto const character : text) {
        auto const byte = static_cast<unsigned char>(character);
        escaped += '\\';
        for (auto const shift : {6U, 3U, 0U})
            escaped += static_cast<char>('0' + ((byte >> shift) & 7U));
    }
    return escaped;
}

/// The call of a program by a shell of our own in the login shell. The words of a login shell lose the line ends at
/// their end; here a sign stands behind each word, and is taken off again.
std::string callWithLineEnds(std::string_view program, Arguments const &arguments)
{
    std::string script = "set --; ";
    for (auto const &argument : arguments)
        script += "w=$(printf '" + octalEscapes(argument) + ".'); set -- \"$@\" \"${w%.}\"; ";
    return "sh -c " + ShellLiteral::posix(script + "exec " + std::string(program) + " \"$@\"");
}

bool endsWithLineEnd(std::string_view text)
{
    return text.ends_with('\n');
}

bool hasBackslash(std::string_view text)
{
    return text.contains('\\');
}

/// How tar is called on a host with these arguments.
std::string tarFor(Arguments const &arguments)
{
    // Through a program, since not every login shell sets a variable for one command.
    return std::ranges::any_of(arguments, hasBackslash) ? "env TAR_OPTIONS=" + std::string(namesAsTheyAre) + " tar"
                                                        : "tar";
}

std::string quotedPaths(ShellDialect dialect, std::span<std::string const> paths)
{
    std::string list;
    for (auto const &path : paths)
        list += (list.empty() ? "" : " ") + quotePath(dialect, path);
    return list;
}

template <class SizeOf>
Names fitting(Names names, std::size_t limit, SizeOf sizeOf)
{
    std::size_t bytes = 0;
    std::size_t count = 0;
    while (count < names.size()) {
        bytes += sizeOf(names[count]);
        if (count > 0 && bytes > limit)
            break;
        ++count;
    }
    return names.first(count);
}

} // namespace

std::string pathOf(std::string_view folder, std::string_view name)
{
    std::string path(folder);
    if (!path.ends_with('/'))
        path += '/';
    return path += name;
}

std::string label(Names names)
{
    return names.size() == 1 ? names.front() : std::to_string(names.size()) + " items";
}

Names fittingFront(ShellDialect dialect, Names names)
{
    if (dialect == ShellDialect::powershell)
        return fitting(names, maxWindowsBytes, [](std::string const &name) { return name.size() + 3; });
    return fitting(names, FileCommands::maxPathBytes,
                   [](std::string const &name) { return ShellLiteral::posix(name).size() + 1; });
}

Names fittingFrontHere(Names names)
{
    // The system counts the pointer to each argument too.
    return fitting(names, maxArgumentBytes, [](std::string const &name) { return name.size() + 1 + sizeof(char *); });
}

Environment tarEnvironment(Environment inherited)
{
    inherited.insert_or_assign("COPYFILE_DISABLE", "1");
    inherited.insert_or_assign("TAR_OPTIONS", namesAsTheyAre);
    return inherited;
}

ChildCommand copyHere(TransferTools const &tools, std::shared_ptr<FileDescriptor const> from, Names names,
                      std::string const &to, Existing existing)
{
    // One cp for many names: to start a program takes longer than to copy a small file. With the folder as the target,
    // a folder is merged with the one that has its name there, and never put into it.
    auto const *const replacing = existing == Existing::removed ? "--remove-destination" : "--force";
    Arguments arguments{"-a", replacing, "--target-directory=" + to, "--"};
    // Names without their folder: the system walks down to each, and for small files that is a part of the time.
    arguments.insert(arguments.end(), names.begin(), names.end());
    auto command = programOfOurs(tools.cp, std::move(arguments));
    command.workingFolder = std::move(from);
    return command;
}

ChildCommand pack(TransferTools const &tools, std::string const &folder, Names names)
{
    auto command = programOfOurs(tools.tar, packArguments(folder, names));
    command.environment = tarEnvironment(inheritedEnvironment());
    command.output = PipeEnd{};
    return command;
}

ChildCommand unpack(TransferTools const &tools, std::string const &folder)
{
    auto command = programOfOurs(tools.tar, {"-xpf", "-", "-C", folder});
    command.environment = tarEnvironment(inheritedEnvironment());
    command.input = PipeEnd{};
    return command;
}

std::string packThere(ShellDialect dialect, std::string_view folder, Names names)
{
    if (dialect == ShellDialect::powershell)
        return windowsTar(packArguments(WindowsPath::toNative(folder), names));
    auto const arguments = packArguments(std::string(folder), names);
    if (std::ranges::any_of(arguments, endsWithLineEnd))
        return callWithLineEnds(tarFor(arguments), arguments);
    auto command = tarFor(arguments) + " -cf - -C " + ShellLiteral::posix(folder) + " --";
    for (auto const &name : names)
        command += " " + ShellLiteral::posix(argumentOf(name));
    return command;
}

std::string unpackThere(ShellDialect dialect, std::string_view folder)
{
    if (dialect == ShellDialect::powershell) {
        Arguments const arguments{"-xf", "-", "-C", WindowsPath::toNative(folder)};
        return windowsTar(arguments);
    }
    Arguments const arguments{"-xpf", "-", "-C", std::string(folder)};
    if (endsWithLineEnd(folder))
        return callWithLineEnds(tarFor(arguments), arguments);
    return tarFor(arguments) + " -xpf - -C " + ShellLiteral::posix(folder);
}

std::string windowsTar(std::span<std::string const> arguments)
{
    return ShellLiteral::powerShellEncoded(ShellLiteral::powerShellInvoke("tar", arguments));
}

ChildCommand overSSH(TransferTools const &tools, std::vector<std::string> transportOptions, std::string const &host,
                     std::string command)
{
    auto arguments = std::move(transportOptions);
    arguments.insert(arguments.end(), {"--", host, std::move(command)});
    auto client = programOfOurs(tools.ssh, std::move(arguments));
    client.environment = tarEnvironment(inheritedEnvironment());
    return client;
}

std::string copyThere(ShellDialect dialect, std::span<std::string const> from, std::string_view to,
                      std::string_view token)
{
    if (dialect == ShellDialect::powershell)
        return FileCommands::copy(dialect, from, to);
    // find, since a tree may be large; rm, so that nothing goes whose cp does not begin any more.
    return EndableCommand::text(token, {"cp", "find", "rm"}, FileCommands::copy(dialect, from, to));
}

std::string measureThere(ShellDialect dialect, std::span<std::string const> paths)
{
    auto size = FileCommands::measure(dialect, paths);
    if (dialect == ShellDialect::powershell)
        return size;
    return size + "; find " + quotedPaths(dialect, paths) + " ! -type d -print0 2>/dev/null | tr -dc '\\000' | wc -c";
}

} // namespace tw::TransferCommands
