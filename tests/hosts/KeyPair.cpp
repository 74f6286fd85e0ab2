#include "tests/hosts/KeyPair.h"

#include "tests/hosts/CommandOutcome.h"
#include "tests/support/TemporaryFolder.h"

#include <stdexcept>

namespace tw::test {

KeyPair KeyPair::generate(IoThread &io, std::string path)
{
    // Ed25519: made in milliseconds, where RSA takes seconds.
    auto const made =
        runCommand(io, {.program = "ssh-keygen", .arguments = {"-q", "-t", "ed25519", "-N", "", "-C", "", "-f", path}});
    if (!made.status.isSuccess())
        throw std::runtime_error("no key could be made: " + made.error);
    auto key = contentOf(path + ".pub");
    key.erase(key.find_last_not_of(" \n") + 1);
    return {std::move(path), std::move(key)};
}

} // namespace tw::test
