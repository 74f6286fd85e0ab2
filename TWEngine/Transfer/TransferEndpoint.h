#pragma once

#include "TWCore/Provider/CommandHost.h"

#include <memory>
#include <string>
#include <utility>

namespace tw {

/// One side of a transfer: a folder of this machine or of a host.
class TransferEndpoint {
public:
    static TransferEndpoint local(std::string path) { return {nullptr, std::move(path)}; }

    /// `path` is in the client's own form, on a Windows host too.
    static TransferEndpoint remote(std::shared_ptr<CommandHost> host, std::string path)
    {
        return {std::move(host), std::move(path)};
    }

    std::string const &path() const noexcept { return folder; }

    /// Null for a folder of this machine.
    std::shared_ptr<CommandHost> const &host() const noexcept { return place; }

private:
    TransferEndpoint(std::shared_ptr<CommandHost> host, std::string path)
        : place(std::move(host)), folder(std::move(path))
    {
    }

    std::shared_ptr<CommandHost> place;
    std::string folder;
};

} // namespace tw
