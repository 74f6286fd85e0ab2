#include "tests/hosts/StandInSSH.h"

#include <charconv>

namespace tw::test {

namespace fs = std::filesystem;

namespace {

std::string nameOf(StandInSSH::Fault fault)
{
    switch (fault) {
    case StandInSSH::Fault::none:
        return "none";
    case StandInSSH::Fault::refuse:
        return "refuse";
    case StandInSSH::Fault::cut:
        return "cut";
    case StandInSSH::Fault::stall:
        return "stall";
    case StandInSSH::Fault::flood:
        return "flood";
    case StandInSSH::Fault::corrupt:
        return "corrupt";
    }
    return {};
}

/// As one word of a shell's command.
std::string quoted(std::string const &text)
{
    std::string word = "'";
    for (auto const byte : text)
        word += byte == '\'' ? std::string("'\\''") : std::string(1, byte);
    return word + '\'';
}

std::string wrapperScript(StandInSSH::Behaviour const &behaviour, std::string const &startsFile)
{
    std::string text = "#!/bin/sh\n";
    if (!behaviour.home.empty())
        text += "HOME=" + quoted(behaviour.home) + "\nexport HOME\n";
    text += "exec " + quoted(TARNWICK_STANDIN_SSH);
    for (auto const &option : {startsFile, nameOf(behaviour.fault), std::to_string(behaviour.afterBytes),
                               std::to_string(behaviour.faultBytes), behaviour.preface, behaviour.message,
                               std::to_string(behaviour.exitCode)})
        text += ' ' + quoted(option);
    return text + " \"$@\"\n";
}

/// The next text up to a NUL, which is taken off `bytes`.
std::string takeText(std::string_view &bytes)
{
    auto const length = bytes.find('\0');
    std::string text(bytes.substr(0, length));
    bytes.remove_prefix(length == std::string_view::npos ? bytes.size() : length + 1);
    return text;
}

} // namespace

StandInSSH::StandInSSH() : wrapper(folder.path("ssh")), startsFile(folder.file("starts"))
{
    behave({});
}

void StandInSSH::behave(Behaviour const &behaviour) const
{
    // In one step: a shell that is starting reads the old script or the new one.
    auto const next = folder.file("next", wrapperScript(behaviour, startsFile));
    fs::permissions(next, fs::perms::owner_all);
    fs::rename(next, wrapper);
}

std::vector<std::vector<std::string>> StandInSSH::starts() const
{
    std::vector<std::vector<std::string>> all;
    auto const content = contentOf(startsFile);
    // Each start has left the number of its arguments and the arguments.
    for (std::string_view rest = content; !rest.empty();) {
        auto const count = std::stoul(takeText(rest));
        auto &arguments = all.emplace_back();
        while (arguments.size() < count)
            arguments.push_back(takeText(rest));
    }
    return all;
}

} // namespace tw::test
