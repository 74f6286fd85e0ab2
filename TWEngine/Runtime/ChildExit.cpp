#include "TWEngine/Runtime/ChildExit.h"

#include "TWEngine/Runtime/FileDescriptor.h"
#include "TWEngine/Runtime/IoThread.h"
#include "TWEngine/Runtime/SharedCompletion.h"
#include "TWEngine/Runtime/SpawnError.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/posix/stream_descriptor.hpp>

#include <cerrno>

#include <signal.h>
#include <sys/wait.h>

// Of glibc 2.36, whose header forgets to say that they are C.
extern "C" {
#include <sys/pidfd.h>
}

namespace tw {

namespace {

ExitStatus statusOf(siginfo_t const &info)
{
    auto const cause = info.si_code == CLD_EXITED ? ExitStatus::Cause::exited : ExitStatus::Cause::killed;
    return {.cause = cause, .number = info.si_status};
}

} // namespace

struct ChildExit::Watch {
    using Result = SharedCompletion<ExitStatus>;

    Watch(IoThread &io, pid_t child, ChildCommand::Session session)
        : processId(child), sessions(io.childSessions()), process(io.context())
    {
        if (session == ChildCommand::Session::own) {
            hasSession = true;
            sessions.add(processId);
        }
    }

    Watch(Watch const &) = delete;
    Watch &operator=(Watch const &) = delete;

    ~Watch()
    {
        if (isCollected)
            return;
        if (isLeft) {
            waitpid(processId, nullptr, WNOHANG); // one that still runs is collected when this process has ended
            return;
        }
        // It cannot be waited for, or the I/O thread has ended first.
        sendSignal(SIGKILL);
        leaveDescendantsLocked();
        while (waitpid(processId, nullptr, 0) < 0 && errno == EINTR) {
        }
    }

    /// Throws SpawnError.
    void open()
    {
        FileDescriptor opened(pidfd_open(processId, 0));
        if (!opened)
            throw SpawnError(errno, "pidfd_open");
        boost::system::error_code error;
        process.assign(opened.get(), error);
        if (error)
            throw SpawnError(error.value(), "pidfd_open");
        opened.release();
    }

    /// From here on the watch lives until the child has been collected.
    static void begin(std::shared_ptr<Watch> const &self)
    {
        std::lock_guard const lock(self->mutex);
        self->process.async_wait(boost::asio::posix::stream_descriptor::wait_read, [self](boost::system::error_code) {
            if (!self->collect())
                begin(self);
        });
    }

    void signal(int number)
    {
        std::lock_guard const lock(mutex);
        if (!isCollected && !isLeft)
            sendSignal(number);
    }

    void leave()
    {
        std::lock_guard const lock(mutex);
        isLeft = true;
        leaveDescendantsLocked();
    }

    void leaveDescendants()
    {
        std::lock_guard const lock(mutex);
        leaveDescendantsLocked();
    }

    std::shared_ptr<Result> const result = std::make_shared<Result>();

private:
    /// False if it was woken for nothing.
    bool collect()
    {
        siginfo_t info = {};
        {
            std::lock_guard const lock(mutex);
            auto const descriptor = static_cast<id_t>(process.native_handle());
            auto const looked = waitid(P_PIDFD, descriptor, &info, WEXITED | WNOHANG | WNOWAIT);
            if (looked == 0 && info.si_pid == 0)
                return false;
            leaveDescendantsLocked();
            info = {};
            waitid(P_PIDFD, descriptor, &info, WEXITED | WNOHANG);
            isCollected = true;
            boost::system::error_code ignored;
            process.close(ignored);
        }
        result->settle({.value = info.si_pid == 0 ? ExitStatus{} : statusOf(info), .failure = nullptr});
        return true;
    }

    void leaveDescendantsLocked()
    {
        if (std::exchange(hasSession, false))
            sessions.remove(processId);
    }

    /// Only while the child is not collected: its number, and its session's, cannot have gone to another until then.
    void sendSignal(int number)
    {
        if (hasSession)
            ::kill(-processId, number);
        else if (process.is_open())
            pidfd_send_signal(process.native_handle(), number, nullptr, 0);
        else
            ::kill(processId, number);
    }

    // Constant after construction.
    pid_t const processId;
    ChildSessions &sessions;

    std::mutex mutex;
    // Under the mutex.
    bool hasSession = false;                       ///< signals go to all processes of it
    boost::asio::posix::stream_descriptor process; ///< a pidfd; closed when collected
    bool isCollected = false;
    bool isLeft = false; ///< no signal is sent to it any more
};

ChildExit::ChildExit(IoThread &io, pid_t child, ChildCommand::Session session)
    : watch(std::make_shared<Watch>(io, child, session))
{
    watch->open();
    Watch::begin(watch);
}

Task<ExitStatus> ChildExit::wait() const
{
    return Watch::Result::wait(watch->result);
}

void ChildExit::leave() const
{
    watch->leave();
}

void ChildExit::leaveDescendants() const
{
    watch->leaveDescendants();
}

void ChildExit::signal(int number) const
{
    watch->signal(number);
}

} // namespace tw
