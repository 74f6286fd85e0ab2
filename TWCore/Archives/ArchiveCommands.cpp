#include "TWCore/Archives/ArchiveCommands.h"

#include "TWCore/Model/WindowsPath.h"

#include <algorithm>

namespace tw::ArchiveCommands {

namespace {

using Arguments = std::vector<Argument>;

Argument path(std::string value)
{
    return {.kind = Argument::Value::path, .value = std::move(value)};
}

Argument name(std::string value)
{
    return {.kind = Argument::Value::name, .value = std::move(value)};
}

void addOptions(Arguments &arguments, std::initializer_list<std::string_view> options)
{
    for (auto const option : options)
        arguments.push_back({.option = std::string(option)});
}

/// bsdtar takes "@name" for an archive whose members it adds.
std::string notAnArchive(std::string const &name)
{
    return name.starts_with('@') ? "./" + name : name;
}

/// bsdtar takes the name of a member for a pattern.
std::string notAPattern(std::string_view name)
{
    std::string escaped;
    for (auto const byte : name) {
        if (std::string_view("*?[]\\^$").contains(byte))
            escaped += '\\';
        escaped += byte;
    }
    return escaped;
}

template <class Change>
void addNames(Arguments &arguments, Names names, Change change)
{
    arguments.push_back({.option = "--"});
    std::ranges::transform(names, std::back_inserter(arguments), [&](auto const &each) { return name(change(each)); });
}

std::string asItIs(std::string const &name)
{
    return name;
}

Call tarPack(std::string program, std::initializer_list<std::string_view> options, Argument output, std::string folder,
             Names names)
{
    Call call{.program = std::move(program)};
    addOptions(call.arguments, options);
    call.arguments.push_back(std::move(output));
    addOptions(call.arguments, {"-C"});
    call.arguments.push_back(path(std::move(folder)));
    addNames(call.arguments, names, notAnArchive);
    return call;
}

Call tarUnpack(std::string program, std::string_view option, Argument archive, std::string into)
{
    Call call{.program = std::move(program)};
    addOptions(call.arguments, {option});
    call.arguments.push_back(std::move(archive));
    addOptions(call.arguments, {"-C"});
    call.arguments.push_back(path(std::move(into)));
    return call;
}

/// "-spd": names are no patterns; "-snl": a link is packed as a link.
Call sevenZipChange(std::string program, std::initializer_list<std::string_view> options, std::string archive,
                    Names names)
{
    Call call{.program = std::move(program)};
    addOptions(call.arguments, options);
    call.arguments.push_back({.option = "--"});
    call.arguments.push_back(path(std::move(archive)));
    std::ranges::transform(names, std::back_inserter(call.arguments), name);
    return call;
}

Call sevenZipUnpack(std::string program, std::string archive, std::string into, Names members)
{
    Call call{.program = std::move(program)};
    addOptions(call.arguments, {"x", "-bd", "-bso0", "-y", "-spd"});
    call.arguments.push_back({"-o", Argument::Value::path, std::move(into)});
    call.arguments.push_back({.option = "--"});
    call.arguments.push_back(path(std::move(archive)));
    std::ranges::transform(members, std::back_inserter(call.arguments), name);
    return call;
}

/// The tar that reads such archives; empty: 7-Zip does.
std::string tarFor(ArchiveTools const &tools, ArchiveFamily family)
{
    switch (family) {
    case ArchiveFamily::tar:
        return tools.tar;
    case ArchiveFamily::zip:
    case ArchiveFamily::other:
        return tools.bsdtar;
    case ArchiveFamily::sevenZip:
        break;
    }
    return {};
}

std::optional<Call> ifThere(std::string const &program, Call call)
{
    return program.empty() ? std::nullopt : std::optional(std::move(call));
}

} // namespace

ArchiveTools toolsOf(ArchiveCapability const &capability)
{
    ArchiveTools tools{.tar = "tar"};
    if (capability.usesBSDTar)
        tools.bsdtar = tools.tar;
    if (capability.hasZipTools) {
        tools.zip = "zip";
        tools.unzip = "unzip";
    }
    tools.sevenZip = capability.sevenZip.value_or("");
    return tools;
}

std::vector<std::string> Call::words() const
{
    std::vector<std::string> words;
    for (auto const &each : arguments)
        words.push_back(each.option + each.value);
    return words;
}

std::string Call::text(ShellDialect dialect) const
{
    std::string list;
    bool const isPosix = dialect == ShellDialect::posix;
    for (auto const &each : arguments) {
        if (isPosix || !list.empty())
            list += isPosix ? ' ' : ',';
        if (isPosix) {
            list += each.option + (each.kind == Argument::Value::none ? "" : quote(dialect, each.value));
            continue;
        }
        auto const value = each.kind == Argument::Value::path ? WindowsPath::toNative(each.value) : each.value;
        list += quote(dialect, each.option + value);
    }
    if (isPosix)
        return (folder.empty() ? "" : "cd " + quotePath(dialect, folder) + " && ") + program + list;
    return (folder.empty() ? "" : "Set-Location -LiteralPath " + quotePath(dialect, folder) + "; ") + "& " + program +
           " @(" + list + ")";
}

bool Call::hasBackslash() const
{
    return std::ranges::any_of(arguments, [](Argument const &each) {
        return each.kind == Argument::Value::name && each.value.contains('\\');
    });
}

std::optional<Call> pack(ArchiveTools const &tools, ArchiveFormat format, std::string output, std::string folder,
                         Names names)
{
    if (format == ArchiveFormat::tarGz)
        return tarPack(tools.tar, {"-czf"}, path(std::move(output)), std::move(folder), names);
    if (format == ArchiveFormat::zip && !tools.bsdtar.empty())
        return tarPack(tools.bsdtar, {"--format", "zip", "-cf"}, path(std::move(output)), std::move(folder), names);
    auto const *const type = format == ArchiveFormat::zip ? "-tzip" : "-t7z";
    auto call =
        sevenZipChange(tools.sevenZip, {"a", type, "-bd", "-bso0", "-y", "-spd", "-snl"}, std::move(output), names);
    call.folder = std::move(folder);
    return ifThere(tools.sevenZip, std::move(call));
}

std::optional<Call> unpack(ArchiveTools const &tools, ArchiveFamily family, std::string archive, std::string into)
{
    if (auto const tar = tarFor(tools, family); !tar.empty())
        return tarUnpack(tar, "-xf", path(std::move(archive)), std::move(into));
    if (!tools.sevenZip.empty())
        return sevenZipUnpack(tools.sevenZip, std::move(archive), std::move(into), {});
    Call call{.program = tools.unzip};
    addOptions(call.arguments, {"-o", "-q"});
    call.arguments.push_back(path(std::move(archive)));
    addOptions(call.arguments, {"-d"});
    call.arguments.push_back(path(std::move(into)));
    return family == ArchiveFamily::zip ? ifThere(tools.unzip, std::move(call)) : std::nullopt;
}

std::optional<Call> extract(ArchiveTools const &tools, ArchiveFamily family, std::string archive, std::string into,
                            Names members, std::string_view prefix)
{
    auto const tar = tarFor(tools, family);
    if (tar.empty())
        return ifThere(tools.sevenZip, sevenZipUnpack(tools.sevenZip, std::move(archive), std::move(into), members));
    auto call = tarUnpack(tar, "-xf", path(std::move(archive)), std::move(into));
    if (tar == tools.bsdtar)
        addNames(call.arguments, members, notAPattern);
    else
        addNames(call.arguments, members, [&](auto const &member) { return std::string(prefix) + member; });
    return call;
}

std::optional<Call> add(ArchiveTools const &tools, ArchiveFormat format, std::string archive, std::string folder,
                        Names names)
{
    Call call{.program = tools.sevenZip};
    if (!tools.sevenZip.empty()) {
        auto const *const type = format == ArchiveFormat::zip ? "-tzip" : "-t7z";
        call = sevenZipChange(tools.sevenZip, {"a", type, "-bd", "-bso0", "-bsp0", "-y", "-spd", "-snl"},
                              std::move(archive), names);
    } else if (format == ArchiveFormat::zip) {
        call.program = tools.zip;
        addOptions(call.arguments, {"-q", "-r", "-y"});
        call.arguments.push_back(path(std::move(archive)));
        addNames(call.arguments, names, asItIs);
    }
    call.folder = std::move(folder);
    return call.program.empty() ? std::nullopt : std::optional(std::move(call));
}

std::optional<Call> remove(ArchiveTools const &tools, ArchiveFormat format, std::string archive, Names members)
{
    if (!tools.sevenZip.empty())
        return sevenZipChange(tools.sevenZip, {"d", "-bd", "-bso0", "-bsp0", "-y", "-spd"}, std::move(archive),
                              members);
    if (format != ArchiveFormat::zip || tools.zip.empty())
        return std::nullopt;
    Call call{.program = tools.zip};
    addOptions(call.arguments, {"-q", "-d"});
    call.arguments.push_back(path(std::move(archive)));
    std::vector<std::string> all;
    for (auto const &member : members) {
        all.push_back(notAPattern(member));
        all.push_back(notAPattern(member) + "/*");
    }
    addNames(call.arguments, all, asItIs);
    return call;
}

Call packToOutput(ArchiveTools const &tools, Compression compression, std::string folder, Names names)
{
    return tarPack(tools.tar, {compression == Compression::gzip ? "-czf" : "-cf"}, {.option = "-"}, std::move(folder),
                   names);
}

Call unpackInput(ArchiveTools const &tools, Compression compression, std::string into)
{
    return tarUnpack(tools.tar, compression == Compression::gzip ? "-xzf" : "-xf", {.option = "-"}, std::move(into));
}

} // namespace tw::ArchiveCommands
