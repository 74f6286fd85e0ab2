#include "TWEngine/Shell/ShellRequest.h"

#include "TWCore/Shell/Base64.h"

namespace tw {

/// What a service is called in each dialect.
struct ShellRequest::Service {
    std::string_view posix;
    std::string_view powershell;
};

ShellRequest ShellRequest::list(ShellDialect dialect, std::string_view path, int depth, std::optional<std::size_t> room)
{
    ShellRequest request(dialect, {"tw_list", "TWList"}, std::to_string(depth) + ' ' + quotePath(dialect, path));
    if (room && dialect == ShellDialect::posix)
        request.name = "TW_MAX=" + std::to_string(*room) + ' ' + request.name;
    return request;
}

ShellRequest ShellRequest::ask(std::string_view path)
{
    return {ShellDialect::posix, {"tw_ask", ""}, quotePath(ShellDialect::posix, path)};
}

ShellRequest ShellRequest::size(ShellDialect dialect, std::string_view path)
{
    return {dialect, {"tw_size", "TWSize"}, quotePath(dialect, path)};
}

ShellRequest ShellRequest::read(ShellDialect dialect, std::string_view path, std::int64_t offset, std::size_t length)
{
    auto const range = std::to_string(offset) + ' ' + std::to_string(length);
    return {dialect, {"tw_read", "TWRead"}, quotePath(dialect, path) + ' ' + range};
}

ShellRequest ShellRequest::run(ShellDialect dialect, std::string_view command)
{
    auto argument = dialect == ShellDialect::posix ? quote(dialect, command) : "'" + Base64::encode(command) + "'";
    return {dialect, {"tw_run", "TWRun"}, std::move(argument)};
}

ShellRequest::ShellRequest(ShellDialect shellDialect, Service const &service, std::string argumentText)
    : dialect(shellDialect),
      name(dialect == ShellDialect::posix ? service.posix : service.powershell),
      arguments(std::move(argumentText))
{
}

std::string ShellRequest::numbered(std::uint64_t id) const
{
    auto call = name + ' ' + std::to_string(id) + ' ' + arguments;
    // On the shell's own input stand the requests behind this one, and a command that reads would take them for data.
    //
    // The braces are for a line that is lost in the middle of a request. At the end of its input bash runs what it has,
    // and a part that ends with a quote is a command: of rm -r 'it'\''s' it may be rm -r 'it'.
    if (dialect == ShellDialect::posix)
        call = "{ " + call + " </dev/null; }";
    return encodeRequest(dialect, call) + std::string(lineTerminator(dialect));
}

} // namespace tw
