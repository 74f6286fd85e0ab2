#include "TWEngine/Passwords/AskpassDesk.h"

#include "TWEngine/Passwords/Askpass.h"
#include "TWEngine/Passwords/AskpassLogin.h"
#include "TWEngine/Platform/RandomDigits.h"
#include "TWEngine/Runtime/EngineRuntime.h"

#include <chrono>

#include <unistd.h>

namespace tw {

namespace {

/// Nobody guesses it in the minutes of a login.
constexpr std::size_t tokenBytes = 16;

/// Removing a few files takes much less. A quitting program waits no longer.
constexpr std::chrono::milliseconds timeToEnd{200};

/// For the name of a socket, which is no secret.
constexpr std::size_t nameBytes = 4;

/// The owner's end of a login.
class Handle final : public LoginDesk::Login {
public:
    explicit Handle(std::shared_ptr<AskpassLogin> begun) : login(std::move(begun)) {}

    Handle(Handle const &) = delete;
    Handle &operator=(Handle const &) = delete;

    ~Handle() override { login->end(); }

    Environment const &environment() const override { return login->environment(); }

    void succeed() override { login->succeed(); }

private:
    std::shared_ptr<AskpassLogin> const login;
};

} // namespace

AskpassDesk::AskpassDesk(Collaborators collaborators) : with(std::move(collaborators)), strand(with.engine.makeStrand())
{
}

Task<std::unique_ptr<LoginDesk::Login>> AskpassDesk::begin(std::string host, Reports reports)
{
    return onStrand(strand, beginHere(shared_from_this(), std::move(host), std::move(reports)));
}

Task<std::unique_ptr<LoginDesk::Login>> AskpassDesk::beginHere(Self self, std::string host, Reports reports)
{
    auto const folder = self->with.helper ? self->with.folder() : std::nullopt;
    if (!folder)
        co_return nullptr;
    auto const path = *folder + "/tarnwick-" + std::to_string(::getpid()) + '-' + randomDigits(nameBytes);
    auto listener = LocalListener::create(self->with.engine.io(), path);
    if (!listener)
        co_return nullptr;
    auto const token = randomDigits(tokenBytes);
    auto const login =
        std::make_shared<AskpassLogin>(AskpassLogin::Collaborators{.engine = self->with.engine,
                                                                   .strand = self->strand,
                                                                   .mainContext = self->with.mainContext,
                                                                   .prompter = self->with.prompter,
                                                                   .keyStore = self->with.keyStore,
                                                                   .listener = std::move(listener),
                                                                   .reports = std::move(reports),
                                                                   .callerOf = self->with.callerOf},
                                       std::move(host), token,
                                       Environment{{"SSH_ASKPASS", *self->with.helper},
                                                   {"SSH_ASKPASS_REQUIRE", "force"}, // even where there is no display
                                                   {Askpass::socketVariable, path},
                                                   {Askpass::tokenVariable, token}});
    login->start();
    std::erase_if(self->logins, [](auto const &each) { return each.expired(); });
    self->logins.push_back(login);
    co_return std::make_unique<Handle>(login);
}

void AskpassDesk::endAll()
{
    auto const done = std::make_shared<std::binary_semaphore>(0);
    spawn({strand.executor(), {}}, endHere(shared_from_this(), done));
    (void)done->try_acquire_for(timeToEnd);
}

Task<void> AskpassDesk::endHere(Self self, std::shared_ptr<std::binary_semaphore> done)
{
    for (auto const &each : std::exchange(self->logins, {})) {
        if (auto const login = each.lock())
            login->end();
    }
    done->release();
    co_return;
}

AskpassGuard::Caller AskpassDesk::callerBelowUs(pid_t caller)
{
    return AskpassGuard::callerBelow(::getpid(), caller, ProcessTable::ofThisSystem());
}

} // namespace tw
