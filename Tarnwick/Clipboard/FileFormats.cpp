#include "Tarnwick/Clipboard/FileFormats.h"

#include "TWCore/Model/DisplayText.h"
#include "TWCore/Model/PercentCoding.h"
#include "TWCore/Shell/Base64.h"
#include "Tarnwick/Connections/ConnectionItem.h"
#include "Tarnwick/Operations/CopiedPath.h"

#include <algorithm>
#include <array>
#include <nlohmann/json.hpp>

namespace tw::FileFormats {

namespace {

using Json = nlohmann::ordered_json;

constexpr std::array formats{FileDrag::mimeType, uriList, gnomeFiles, kdeCut, plainText};

/// Longer ones are on no file system.
constexpr std::size_t longestName = 4096;
constexpr std::size_t longestPath = std::size_t{64} * 1024;

constexpr std::string_view fileScheme = "file://";

bool isNameOfFile(std::string_view name)
{
    return !name.empty() && name != "." && name != ".." && name.size() <= longestName &&
           name.find_first_of(std::string_view("/\0", 2)) == std::string_view::npos;
}

bool isPath(std::string_view path)
{
    return path.starts_with('/') && path.size() <= longestPath && !path.contains('\0');
}

bool isConnection(std::string_view name)
{
    return !name.empty() && name.size() <= longestName &&
           std::ranges::none_of(name, [](char sign) { return static_cast<unsigned char>(sign) <= ' '; });
}

// The private format. JSON is text, so what is no UTF-8 has its bytes beside it, under a key of their own.

void putBytes(Json &object, char const *key, std::string const &bytes)
{
    auto text = repaired(bytes);
    if (text != bytes)
        object[std::string(key) + "Bytes"] = Base64::encode(bytes);
    object[key] = std::move(text);
}

std::string decodedBytes(Json const &encoded)
{
    auto bytes = Base64::decode(encoded.get_ref<std::string const &>());
    return bytes ? *std::move(bytes) : std::string();
}

std::string bytesAt(Json const &object, char const *key)
{
    auto const raw = object.find(std::string(key) + "Bytes");
    return raw != object.end() ? decodedBytes(*raw) : object.at(key).get<std::string>();
}

std::string renderOwn(FileDrag const &files)
{
    Json object;
    putBytes(object, "connection", files.connection);
    putBytes(object, "directory", files.directory);
    auto names = Json::array();
    auto isText = true;
    for (auto const &name : files.names) {
        auto text = repaired(name);
        isText = isText && text == name;
        names.push_back(std::move(text));
    }
    object["names"] = std::move(names);
    if (!isText) {
        auto &bytes = object["namesBytes"] = Json::array();
        for (auto const &name : files.names)
            bytes.push_back(Base64::encode(name));
    }
    object["isMove"] = files.isMove;
    return object.dump();
}

std::vector<std::string> namesIn(Json const &object)
{
    auto const raw = object.find("namesBytes");
    auto const &list = raw != object.end() ? *raw : object.at("names");
    std::vector<std::string> names;
    if (list.size() > mostNames)
        return names;
    for (auto const &each : list)
        names.push_back(raw != object.end() ? decodedBytes(each) : each.get<std::string>());
    return names;
}

struct TooMuch {};

/// Throws TooMuch before a text of many small values takes many times its size in memory.
Json parsed(std::string_view text)
{
    constexpr auto mostEvents = 2 * mostNames + 100;
    constexpr auto deepest = 3;
    std::size_t events = 0;
    return Json::parse(text, [&events](int depth, Json::parse_event_t, Json const &) {
        if (depth > deepest || ++events > mostEvents)
            throw TooMuch();
        return true;
    });
}

std::optional<FileDrag> readOwn(std::string_view text)
{
    if (text.size() > mostBytes)
        return std::nullopt;
    try {
        auto const object = parsed(text);
        FileDrag files{.connection = bytesAt(object, "connection"),
                       .directory = bytesAt(object, "directory"),
                       .names = namesIn(object),
                       .isMove = object.at("isMove").get<bool>()};
        auto const isSound = isConnection(files.connection) && isPath(files.directory) && !files.names.empty() &&
                             std::ranges::all_of(files.names, isNameOfFile);
        return isSound ? std::optional(std::move(files)) : std::nullopt;
    } catch (Json::exception const &) {
        return std::nullopt;
    } catch (TooMuch const &) {
        return std::nullopt;
    }
}

// The formats of other programs.

std::string addressOf(std::string const &connection, std::string const &path)
{
    auto const place =
        connection == localConnection ? std::string(fileScheme) : "sftp://" + PercentCoding::encoded(connection, "@");
    return place + PercentCoding::encoded(path);
}

std::string joined(FileDrag const &files, std::string_view separator,
                   std::string (*render)(std::string const &connection, std::string const &path))
{
    std::string text;
    for (auto const &path : files.paths()) {
        if (!text.empty())
            text += separator;
        text += render(files.connection, path);
    }
    return text;
}

std::string plainPath(std::string const &connection, std::string const &path)
{
    CopiedPath::Place const place{.connection = connection, .homeFolder = {}, .otherPath = {}};
    return repaired(CopiedPath::render(path, CopiedPath::Style::hostAndPath, place));
}

/// The path of an address on this machine.
std::optional<std::string> pathIn(std::string_view address)
{
    if (!address.starts_with(fileScheme))
        return std::nullopt;
    address.remove_prefix(fileScheme.size());
    constexpr std::string_view thisMachine = "localhost";
    if (address.starts_with(thisMachine))
        address.remove_prefix(thisMachine.size());
    auto path = PercentCoding::decoded(address);
    while (path.size() > 1 && path.ends_with('/')) // as folders may be written
        path.pop_back();
    auto const isSound = isPath(path) && isNameOfFile(std::string_view(path).substr(path.rfind('/') + 1));
    return isSound ? std::optional(std::move(path)) : std::nullopt;
}

/// One address a line. Those of other places, and comments, are left out.
std::vector<std::string> pathsIn(std::string_view lines)
{
    std::vector<std::string> paths;
    while (!lines.empty() && paths.size() < mostNames) {
        auto const end = std::min(lines.find_first_of(std::string_view("\r\n\0", 3)), lines.size());
        if (auto path = pathIn(lines.substr(0, end)))
            paths.push_back(*std::move(path));
        lines.remove_prefix(std::min(end + 1, lines.size()));
    }
    return paths;
}

std::optional<Offered> readGnome(std::string_view text)
{
    auto const line = text.substr(0, text.find('\n'));
    if (text.size() > mostBytes || (line != "cut" && line != "copy"))
        return std::nullopt;
    return Offered{.paths = pathsIn(text.substr(line.size())), .isMove = line == "cut"};
}

} // namespace

std::span<std::string_view const> all()
{
    return formats;
}

std::string renderUriList(std::span<std::string const> paths)
{
    std::string text;
    for (auto const &path : paths)
        text += addressOf(localConnection, path) + "\r\n";
    return text;
}

std::optional<std::string> render(FileDrag const &files, std::string_view type)
{
    if (type == FileDrag::mimeType)
        return renderOwn(files);
    if (type == uriList)
        return joined(files, "\r\n", addressOf) + "\r\n";
    if (type == gnomeFiles)
        return (files.isMove ? "cut\n" : "copy\n") + joined(files, "\n", addressOf);
    if (type == kdeCut)
        return files.isMove ? "1" : "0";
    if (type == plainText)
        return joined(files, "\n", plainPath);
    return std::nullopt;
}

std::optional<Offered> read(Source const &source)
{
    if (auto const bytes = source(FileDrag::mimeType)) {
        if (auto files = readOwn(*bytes)) {
            auto const isMove = files->isMove;
            return Offered{.own = std::move(files), .isMove = isMove};
        }
    }
    if (auto const bytes = source(gnomeFiles)) {
        auto offered = readGnome(*bytes);
        if (offered && !offered->paths.empty())
            return offered;
    }
    auto const list = source(uriList);
    if (!list || list->size() > mostBytes)
        return std::nullopt;
    Offered offered{.paths = pathsIn(*list)};
    if (offered.paths.empty())
        return std::nullopt;
    auto const cut = source(kdeCut);
    offered.isMove = cut && cut->starts_with('1');
    return offered;
}

} // namespace tw::FileFormats
