#pragma once

#include "TWEngine/Browsing/Browser.h"
#include "TWEngine/Transfer/TransferEndpoint.h"

#include <memory>
#include <string>
#include <vector>

namespace tw {

class OpenArchive;

/// What an operation works on, as it was at the moment of the key press. What the pane does afterwards changes nothing
/// about it.
struct Operands {
    std::shared_ptr<Browser> browser;
    std::string connection;         ///< "local", or a host
    std::string path;               ///< of the listing on show
    std::vector<std::string> names; ///< exact bytes: the marked names on show, else the name under the cursor
    std::shared_ptr<OpenArchive const> archive = {}; ///< whose members they are; null: they are files

    /// The full path of one of the names.
    std::string pathOf(std::string const &name) const { return path == "/" ? path + name : path + "/" + name; }

    /// The full paths of all names, in their order.
    std::vector<std::string> paths() const
    {
        std::vector<std::string> all;
        all.reserve(names.size());
        for (auto const &name : names)
            all.push_back(pathOf(name));
        return all;
    }

    /// A path on the machine of the browser, as one side of a transfer.
    TransferEndpoint endpoint(std::string at) const
    {
        auto host = browser->host();
        return host ? TransferEndpoint::remote(std::move(host), std::move(at)) : TransferEndpoint::local(std::move(at));
    }
};

} // namespace tw
