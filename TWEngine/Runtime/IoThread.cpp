#include "TWEngine/Runtime/IoThread.h"

#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/io_context.hpp>

#include <thread>

#include <signal.h>

namespace tw {

struct IoThread::Loop {
    // One thread runs it, so that Asio may leave out what it needs for several.
    boost::asio::io_context context{1};
    boost::asio::executor_work_guard<boost::asio::io_context::executor_type> stayUp{context.get_executor()};
    std::thread thread{[this] { context.run(); }};
};

namespace {

void setSignals()
{
    ::signal(SIGPIPE, SIG_IGN);
    // If the parent process ignores it, so do we, and the system then throws exit codes away.
    struct sigaction inherited = {};
    sigaction(SIGCHLD, nullptr, &inherited);
    if (inherited.sa_handler == SIG_IGN)
        ::signal(SIGCHLD, SIG_DFL);
}

} // namespace

IoThread::IoThread()
{
    setSignals();
    loop = std::make_unique<Loop>();
}

IoThread::~IoThread()
{
    loop->context.stop();
    loop->thread.join();
}

boost::asio::io_context &IoThread::context() const noexcept
{
    return loop->context;
}

} // namespace tw
