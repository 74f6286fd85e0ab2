#pragma once

#include "TWEngine/Runtime/ExitStatus.h"

#include <optional>
#include <string>

namespace tw {

/// How a tar pipe ended: what its two programs and the pump between them came to.
struct PipeEnding {
    struct Program {
        ExitStatus status = {};
        std::string words = {}; ///< what it wrote to its standard error
        bool isHere = true;     ///< on this machine, and not on a host
    };

    Program producer = {};
    Program consumer = {};
    std::string refusal = {};   ///< why the stream was refused; empty: it was not
    bool couldNotWrite = false; ///< the consumer stopped reading before the end
    bool isWhole = false;       ///< the archive has passed to its end

    struct Failure {
        std::string operation;
        std::string detail;
    };

    /// Nothing if everything has arrived. The producer comes first, since a consumer without an archive fails too; but
    /// a consumer that stopped reading is the cause of what became of the producer.
    std::optional<Failure> failure() const;
};

} // namespace tw
