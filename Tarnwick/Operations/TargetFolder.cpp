#include "Tarnwick/Operations/TargetFolder.h"

#include "TWCore/Model/FileOperationError.h"
#include "TWCore/Model/Trimmed.h"
#include "TWCore/Model/WindowsPath.h"
#include "TWCore/Provider/CommandHost.h"
#include "Tarnwick/Connections/ConnectionItem.h"
#include "Tarnwick/Connections/Connections.h"
#include "Tarnwick/Panes/PaneSpec.h"
#include "Tarnwick/Panes/TypedPath.h"

#include <cstdlib>

namespace tw {

namespace {

std::optional<std::string> environmentVariable(std::string const &name)
{
    auto const *const value = std::getenv(name.c_str());
    return value ? std::optional<std::string>(value) : std::nullopt;
}

Task<std::string> homeOn(std::shared_ptr<Browser> browser)
{
    auto const host = browser->host();
    if (!host)
        co_return PaneSpec::localHome().path;
    auto home = co_await host->defaultDirectory();
    co_return home;
}

Task<std::shared_ptr<Browser>> browserOf(OperationContext context, std::string connection)
{
    if (connection == context.target.connection)
        co_return context.target.browser;
    if (connection == context.operands.connection)
        co_return context.operands.browser;
    if (!context.connections)
        throw FileOperationError::Unsupported("another connection than those of the panes");
    if (connection == localConnection)
        co_return context.connections->local();
    auto browser = co_await context.connections->ssh(std::move(connection));
    co_return browser;
}

} // namespace

std::optional<std::string> objectionToTarget(std::string_view text)
{
    auto const typed = typedPath(text, {});
    if (!typed)
        return "Type the path of a folder.";
    return typed->problem.isEmpty() ? std::nullopt : std::optional(typed->problem.english());
}

Task<Operands> targetFolder(OperationContext context, std::string text)
{
    auto target = context.target;
    target.names.clear();
    // Read as a path, it would lose the white space at its ends.
    if (text == trimmed(WindowsPath::display(target.path)))
        co_return target;
    TypedPath::Context where{.folder = target.path,
                             .localHome = PaneSpec::localHome().path,
                             .isLocal = target.connection == localConnection,
                             .variable = environmentVariable};
    if (beginsAtHome(text)) {
        auto home = co_await homeOn(target.browser);
        where.home = std::move(home);
    }
    auto const typed = typedPath(text, where);
    if (!typed || !typed->problem.isEmpty())
        throw FileOperationError::Unsupported(typed ? typed->problem.english() : "an empty path");
    if (!typed->connection.empty()) {
        auto browser = co_await browserOf(context, typed->connection);
        target.browser = std::move(browser);
        target.connection = typed->connection;
    }
    target.path = typed->path.empty() ? "~" : typed->path;
    if (!target.path.starts_with('/')) {
        auto const home = co_await homeOn(target.browser);
        target.path = fromHome(target.path, home);
    }
    co_return target;
}

} // namespace tw
