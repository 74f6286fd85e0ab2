#include "TWEngine/Runtime/TerminationSignals.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/signal_set.hpp>

#include <csignal>

namespace tw {

/// On the I/O thread once it is made.
struct TerminationSignals::Watch {
    boost::asio::signal_set signals;

    explicit Watch(boost::asio::io_context &context) : signals(context, SIGTERM, SIGINT)
    {
        // Ignored by the one who started the program, as nohup(1) does: it is to go on without its terminal.
        struct sigaction hangUp = {};
        if (::sigaction(SIGHUP, nullptr, &hangUp) == 0 && hangUp.sa_handler != SIG_IGN)
            signals.add(SIGHUP);
    }
};

TerminationSignals::TerminationSignals(IoThread &io, std::shared_ptr<Executor> executor,
                                       std::function<void(int)> arrived)
    : watch(std::make_shared<Watch>(io.context())),
      callback(std::make_shared<std::function<void(int)>>(std::move(arrived)))
{
    auto tell = [watching = std::weak_ptr(watch), executor = std::move(executor),
                 weak = std::weak_ptr(callback)](boost::system::error_code const &failure, int signal) {
        if (failure)
            return; // nobody listens any more
        if (auto const listening = watching.lock()) {
            boost::system::error_code ignored;
            listening->signals.clear(ignored); // from here on they do what they always do
        }
        executor->post([weak, signal] {
            if (auto const call = weak.lock())
                (*call)(signal);
        });
    };
    watch->signals.async_wait(std::move(tell));
}

TerminationSignals::~TerminationSignals()
{
    // The set is not for two threads at once.
    boost::asio::post(watch->signals.get_executor(), [watched = watch] {
        boost::system::error_code ignored;
        watched->signals.clear(ignored);
        watched->signals.cancel(ignored);
    });
}

} // namespace tw
