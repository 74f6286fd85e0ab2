#pragma once

#include "TWEngine/Shell/ClientReport.h"

#include <functional>
#include <memory>
#include <string_view>

namespace tw {

/// Reads what one run of a session's client writes to its standard error.
///
/// Threads: used on the session's strand.
class ClientWords {
public:
    virtual ~ClientWords() = default;

    /// Takes the next bytes, cut anywhere.
    virtual void hear(std::string_view bytes) = 0;

    /// What is known so far. `printed` is empty: that is not on standard error.
    virtual ClientReport report() const = 0;

    /// Makes one for a new run of the client. `onStage` is called from `hear` for each stage that is reached.
    using Maker = std::function<std::unique_ptr<ClientWords>(std::function<void(ClientStage)> onStage)>;
};

} // namespace tw
