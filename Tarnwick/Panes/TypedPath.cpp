#include "Tarnwick/Panes/TypedPath.h"

#include "TWCore/Model/PercentCoding.h"
#include "TWCore/Model/Trimmed.h"
#include "TWCore/Model/WindowsPath.h"
#include "Tarnwick/Connections/ConnectionItem.h"

#include <algorithm>

namespace tw {

namespace {

/// As long as a name of the internet can be, with a user before it.
constexpr std::size_t maxHostBytes = 320;

bool isLetter(char sign)
{
    return (sign >= 'a' && sign <= 'z') || (sign >= 'A' && sign <= 'Z');
}

bool isDigit(char sign)
{
    return sign >= '0' && sign <= '9';
}

/// Of a letter.
char small(char sign)
{
    return static_cast<char>(sign | 0x20);
}

bool isOfVariable(char sign)
{
    return isLetter(sign) || isDigit(sign) || sign == '_';
}

TypedPath refused(Text problem)
{
    return {.problem = std::move(problem)};
}

/// Appends the components of `path` to the absolute `result`, which has no slash at its end and is empty at the root.
void walk(std::string &result, std::string_view path)
{
    while (!path.empty()) {
        auto const end = std::min(path.find('/'), path.size());
        auto const component = path.substr(0, end);
        path.remove_prefix(std::min(end + 1, path.size()));
        if (component.empty() || component == ".")
            continue;
        if (component == "..")
            result.resize(result.empty() ? 0 : result.rfind('/')); // above the root is the root
        else
            result.append("/").append(component);
    }
}

std::string absolute(std::string_view path, std::string_view folder)
{
    std::string result;
    if (!path.starts_with('/'))
        walk(result, folder);
    walk(result, path);
    return result.empty() ? "/" : result;
}

bool isHome(std::string_view path)
{
    return path == "~" || path.starts_with("~/");
}

/// ssh takes the host as an argument. A name with a "-" first would be an option, and blanks are in no name.
bool isHost(std::string_view name)
{
    auto const isPart = [](char sign) {
        return static_cast<unsigned char>(sign) > ' ' && sign != '\x7f' && sign != '/' && sign != '\\';
    };
    auto const host = name.substr(name.rfind('@') + 1);
    return !host.empty() && name.size() <= maxHostBytes && !name.starts_with('-') && !host.starts_with('-') &&
           !name.starts_with('@') && std::ranges::all_of(name, isPart);
}

TypedPath onHost(std::string_view host, std::string_view path)
{
    if (host.empty())
        return refused("the address names no host");
    if (!isHost(host))
        return refused({"%@ is not the name of a host", {std::string(host)}});
    if (path.empty())
        return {.connection = std::string(host)};
    if (path.starts_with('/'))
        return {.connection = std::string(host), .path = absolute(path, "/")};
    auto const below = isHome(path) ? path.substr(1) : path;
    auto const fromRoot = absolute(below, "/");
    return {.connection = std::string(host), .path = fromRoot == "/" ? "~" : "~" + fromRoot};
}

/// What stands between "//" and the path of an address.
struct Authority {
    std::string user; ///< with the password, if there is one
    std::string host;
    std::string port;
};

Authority authorityOf(std::string_view text)
{
    Authority authority;
    if (auto const at = text.rfind('@'); at != std::string_view::npos) {
        authority.user = PercentCoding::decoded(text.substr(0, at));
        text.remove_prefix(at + 1);
    }
    // The colons of an IPv6 address stand in brackets.
    auto const bracket = text.starts_with('[') ? text.find(']') : std::string_view::npos;
    auto const colon = text.find(':', bracket == std::string_view::npos ? 0 : bracket);
    auto const host = text.substr(0, colon);
    authority.host = PercentCoding::decoded(bracket == std::string_view::npos ? host : host.substr(1, bracket - 1));
    if (colon != std::string_view::npos)
        authority.port = text.substr(colon + 1);
    return authority;
}

TypedPath ofHostAddress(std::string_view rest)
{
    auto const slash = std::min(rest.find('/'), rest.size());
    auto const authority = authorityOf(rest.substr(0, slash));
    if (authority.user.find(':') != std::string::npos)
        return refused("an address must not contain a password");
    if (!authority.port.empty() && authority.port != "22")
        return refused({"give %@ a name with its port in ~/.ssh/config, and use that name", {authority.host}});
    auto const path = PercentCoding::decoded(rest.substr(slash));
    return onHost(authority.user.empty() ? authority.host : authority.user + "@" + authority.host, path);
}

TypedPath ofFileAddress(std::string_view rest)
{
    auto const slash = std::min(rest.find('/'), rest.size());
    auto const host = PercentCoding::decoded(rest.substr(0, slash));
    if (!host.empty() && host != "localhost")
        return refused({"this address names a file of %@; files of hosts are opened as sftp://%@/path", {host, host}});
    return {.connection = std::string(localConnection),
            .path = absolute(PercentCoding::decoded(rest.substr(slash)), "/")};
}

/// Nothing for a text that is no address.
std::optional<TypedPath> addressed(std::string_view text)
{
    auto const colon = text.find(':');
    if (colon == std::string_view::npos)
        return std::nullopt;
    std::string scheme(text.substr(0, colon));
    std::ranges::transform(scheme, scheme.begin(), [](char sign) { return isLetter(sign) ? small(sign) : sign; });
    auto const rest = text.substr(colon + 1);
    if (scheme == "file" && rest.starts_with('/') && !rest.starts_with("//"))
        return ofFileAddress(rest);
    if (!rest.starts_with("//") || scheme.empty() || !isLetter(scheme.front()) ||
        !std::ranges::all_of(scheme, [](char sign) { return isOfVariable(sign) || sign == '+' || sign == '-'; }))
        return std::nullopt;
    if (scheme == "file")
        return ofFileAddress(rest.substr(2));
    if (scheme == "sftp" || scheme == "ssh")
        return ofHostAddress(rest.substr(2));
    return refused({"%@ addresses cannot be opened here", {scheme + "://"}});
}

/// "C:/x" and "C:\x" where the folder on show is of a drive too.
bool isOfDrive(std::string_view text, TypedPath::Context const &context)
{
    return !context.isLocal && text.size() >= 2 && isLetter(text[0]) && text[1] == ':' &&
           WindowsPath::display(context.folder) != context.folder;
}

/// "host:path". Nothing if a slash comes before the colon: "./a:b" is a name.
std::optional<TypedPath> ofHost(std::string_view text, TypedPath::Context const &context)
{
    auto const colon = text.find(':');
    if (colon == std::string_view::npos || colon == 0 || text.find('/') < colon)
        return std::nullopt;
    auto const host = text.substr(0, colon);
    auto const path = text.substr(colon + 1);
    if (host != localConnection)
        return onHost(host, path);
    return TypedPath{.connection = std::string(host),
                     .path = isHome(path) ? fromHome(path, context.localHome) : absolute(path, context.localHome)};
}

std::optional<std::string> valueOf(std::string const &name, TypedPath::Context const &context)
{
    if (name == "HOME")
        return context.home;
    return context.isLocal && context.variable ? context.variable(name) : std::nullopt;
}

/// The name of a variable behind a "$", and the bytes that it takes with its braces.
std::pair<std::string, std::size_t> variableIn(std::string_view text)
{
    auto const braces = text.starts_with('{') ? 1U : 0U;
    auto end = std::size_t(braces);
    while (end < text.size() && isOfVariable(text[end]))
        ++end;
    auto const isClosed = braces == 0 || (end < text.size() && text[end] == '}');
    auto const isName = end > braces && !isDigit(text[braces]);
    if (!isClosed || !isName)
        return {};
    return {std::string(text.substr(braces, end - braces)), end + braces};
}

std::string withVariables(std::string_view text, TypedPath::Context const &context)
{
    std::string result;
    while (!text.empty() && result.size() <= TypedPath::maxBytes) {
        auto const dollar = std::min(text.find('$'), text.size());
        result.append(text.substr(0, dollar));
        text.remove_prefix(dollar);
        if (text.empty())
            break;
        auto const [name, length] = variableIn(text.substr(1));
        auto const value = name.empty() ? std::nullopt : valueOf(name, context);
        auto const taken = value ? length + 1 : 1;
        result.append(value ? std::string_view(*value) : text.substr(0, taken));
        text.remove_prefix(taken);
    }
    return result;
}

TypedPath read(std::string_view text, TypedPath::Context const &context)
{
    if (auto place = addressed(text))
        return *std::move(place);
    if (isOfDrive(text, context))
        return {.path = absolute(WindowsPath::fromNative(text), "/")};
    if (auto place = ofHost(text, context))
        return *std::move(place);
    if (isHome(text))
        return {.path = fromHome(text, context.home)};
    auto const path = withVariables(text, context);
    if (path.size() > TypedPath::maxBytes)
        return refused("this path is too long");
    return {.path = absolute(path, context.folder)};
}

} // namespace

std::string fromHome(std::string_view path, std::string_view home)
{
    return isHome(path) ? absolute(path.substr(1).empty() ? "." : "." + std::string(path.substr(1)), home)
                        : absolute(path, "/");
}

bool beginsAtHome(std::string_view text)
{
    text = trimmed(text);
    constexpr std::string_view spellings[] = {"~", "$HOME", "${HOME}"};
    return std::ranges::any_of(spellings, [&](auto spelling) { return text.starts_with(spelling); });
}

std::optional<TypedPath> typedPath(std::string_view text, TypedPath::Context const &context)
{
    text = trimmed(text);
    if (text.empty())
        return std::nullopt;
    if (text.size() > TypedPath::maxBytes)
        return refused("this path is too long");
    auto place = read(text, context);
    if (place.path.find('\0') != std::string::npos || place.connection.find('\0') != std::string::npos)
        return refused("a path cannot contain a zero byte");
    return place;
}

} // namespace tw
