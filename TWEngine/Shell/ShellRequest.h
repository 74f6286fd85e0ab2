#pragma once

#include "TWCore/Shell/ShellDialect.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tw {

/// One request to the resident script of a host, before it has its number.
///
/// The number is put between the parts that were made here, not searched for in them: a name may hold any mark that a
/// search would look for.
class ShellRequest {
public:
    /// The entries below `path`, down to `depth` levels, as ListingParser reads them.
    /// With `room`, a POSIX host cuts it at that many bytes in place of the session's budget.
    static ShellRequest list(ShellDialect dialect, std::string_view path, int depth,
                             std::optional<std::size_t> room = {});

    /// Whether `path` can be listed, and why not, as PathQuestion reads it. For POSIX hosts.
    static ShellRequest ask(std::string_view path);

    /// The length of a file, as ShellAnswer::fileSize reads it.
    static ShellRequest size(ShellDialect dialect, std::string_view path);

    /// At most `length` bytes of a file from `offset` on, as ShellAnswer::fileBytes reads them.
    static ShellRequest read(ShellDialect dialect, std::string_view path, std::int64_t offset, std::size_t length);

    /// What `command` prints. Its input is empty.
    static ShellRequest run(ShellDialect dialect, std::string_view command);

    /// All that is written to the host, the end of the line included.
    std::string numbered(std::uint64_t id) const;

private:
    struct Service;

    ShellRequest(ShellDialect shellDialect, Service const &service, std::string argumentText);

    ShellDialect dialect;
    std::string name; ///< of the function on the host, behind assignments for it alone
    std::string arguments;
};

} // namespace tw
