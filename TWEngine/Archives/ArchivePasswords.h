#pragma once

#include "TWCore/Archives/ArchivePasswordError.h"
#include "TWCore/Async/FailureKind.h"
#include "TWCore/Async/Outcome.h"
#include "TWEngine/Transfer/TransferEndpoint.h"

#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>

namespace tw {

/// The passwords of archives: asked for when a tool wants one, and kept in memory until the program ends.
///
/// Threads: may be used from anywhere.
class ArchivePasswords {
public:
    using Shared = std::shared_ptr<ArchivePasswords>;
    using Password = std::optional<std::string>;

    struct Question {
        std::string archive; ///< the name of the file
        int attempt = 1;     ///< counts the questions for one archive
    };

    /// Asks the user; nothing if there is no answer. Called from any thread.
    using Ask = std::function<Task<Password>(Question)>;

    explicit ArchivePasswords(Ask question) : ask(std::move(question)) {}

    /// More are not kept; then all are forgotten.
    static constexpr std::size_t mostKept = 64;

    enum class Asking { allowed, forbidden };

    /// Performs `work` with the password of `archive`, first with the one that is known, if any. As long as it throws
    /// ArchivePasswordError, the user is asked, and `work` is performed again. `self` may be null: nobody is asked.
    ///
    /// Errors: what `work` throws; FileOperationError::Cancelled if the user does not answer.
    template <class T>
    static Task<T> perform(Shared self, TransferEndpoint archive, std::function<Task<T>(Password)> work,
                           Asking asking = Asking::allowed)
    {
        auto password = self ? self->known(archive) : std::nullopt;
        for (int attempt = 1;; ++attempt) {
            auto outcome = co_await outcomeOf(work(password));
            if (!failureIs<ArchivePasswordError>(outcome.failure)) {
                if (password && !outcome.failure)
                    self->keep(archive, *password);
                co_return outcome.take();
            }
            if (!self || asking == Asking::forbidden)
                outcome.take();
            password = co_await answer(self, archive, attempt);
        }
    }

private:
    static Task<Password> answer(Shared self, TransferEndpoint archive, int attempt);
    Password known(TransferEndpoint const &archive) const;
    void keep(TransferEndpoint const &archive, std::string const &password);

    Ask const ask; ///< constant after construction

    mutable std::mutex mutex;
    std::map<std::string, std::string> kept; ///< by place; under the mutex
};

} // namespace tw
