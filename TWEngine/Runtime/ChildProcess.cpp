#include "TWEngine/Runtime/ChildProcess.h"

#include "TWEngine/Runtime/ChildLaunch.h"
#include "TWEngine/Runtime/FileDescriptor.h"

#include <cerrno>

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

namespace tw {

namespace {

enum class Direction { intoChild, outOfChild };

/// What a pipe may hold, where the system allows it; the most that it allows without a privilege. With it a stream of
/// bytes is handed over in large pieces, and fewer times does either side wait for the other.
constexpr int pipeBytes = 1024 * 1024;

/// The child's side of one of its ends, and ours if it is a pipe.
struct Connection {
    FileDescriptor theirs;
    std::unique_ptr<ChildPipe> ours;
};

/// The same file under a number above the three standard ones, which are overwritten in the child one by
/// one. We have such numbers if we were started with one of the three closed.
FileDescriptor aboveStandard(FileDescriptor opened, std::string const &subject)
{
    if (!opened)
        throw SpawnError(errno, subject);
    if (opened.get() > STDERR_FILENO)
        return opened;
    FileDescriptor copy(fcntl(opened.get(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
    if (!copy)
        throw SpawnError(errno, subject);
    return copy;
}

int openFlags(FileEnd::Use use)
{
    switch (use) {
    case FileEnd::Use::read:
        return O_RDONLY;
    case FileEnd::Use::replace:
        return O_WRONLY | O_CREAT | O_TRUNC;
    case FileEnd::Use::append:
        return O_WRONLY | O_CREAT | O_APPEND;
    }
    return O_RDONLY;
}

Connection openFile(std::string const &path, int flags)
{
    if (path.find('\0') != std::string::npos)
        throw SpawnError(EINVAL, path);
    constexpr mode_t lessTheMask = 0666;
    return {aboveStandard(FileDescriptor(open(path.c_str(), flags | O_CLOEXEC, lessTheMask)), path), nullptr};
}

Connection openPipe(IoThread &io, Direction direction)
{
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0)
        throw SpawnError(errno, "pipe");
    FileDescriptor readEnd(ends[0]);
    FileDescriptor writeEnd(ends[1]);
    // A refusal leaves it as it was, which is slower but right.
    fcntl(writeEnd.get(), F_SETPIPE_SZ, pipeBytes);
    auto &ours = direction == Direction::intoChild ? writeEnd : readEnd;
    auto &theirs = direction == Direction::intoChild ? readEnd : writeEnd;
    return {aboveStandard(std::move(theirs), "pipe"), std::make_unique<ChildPipe>(io, std::move(ours))};
}

struct Connector {
    IoThread &io;
    Direction direction;

    Connection operator()(NullEnd) const { return openFile("/dev/null", O_RDWR); }

    Connection operator()(PipeEnd) const { return openPipe(io, direction); }

    Connection operator()(FileEnd const &file) const { return openFile(file.path, openFlags(file.use)); }

    Connection operator()(DescriptorEnd descriptor) const
    {
        FileDescriptor copy(fcntl(descriptor.number, F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
        return {aboveStandard(std::move(copy), "descriptor"), nullptr};
    }
};

template <class T>
Task<T> notAPipe()
{
    throw PipeError(EBADF);
    co_return T();
}

} // namespace

struct ChildProcess::Ends {
    std::unique_ptr<ChildPipe> input;
    std::unique_ptr<ChildPipe> output;
    std::unique_ptr<ChildPipe> error;
};

std::expected<std::shared_ptr<ChildProcess>, SpawnError> ChildProcess::start(IoThread &io, ChildCommand const &command)
{
    try {
        auto input = std::visit(Connector{io, Direction::intoChild}, command.input);
        auto output = std::visit(Connector{io, Direction::outOfChild}, command.output);
        auto error = std::visit(Connector{io, Direction::outOfChild}, command.error);
        auto const child = launchChild(command, {input.theirs.get(), output.theirs.get(), error.theirs.get()});
        return std::make_shared<ChildProcess>(
            io, Ends{std::move(input.ours), std::move(output.ours), std::move(error.ours)}, child, command.session);
    } catch (SpawnError const &failure) {
        return std::unexpected(failure);
    }
}

ChildProcess::ChildProcess(IoThread &io, Ends ends, pid_t child, ChildCommand::Session session)
    : id(child),
      exit(io, child, session),
      input(std::move(ends.input)),
      output(std::move(ends.output)),
      error(std::move(ends.error))
{
}

ChildProcess::~ChildProcess()
{
    terminate();
}

Task<std::string> ChildProcess::read(ChildOutput from, std::string buffer) const
{
    auto const &pipe = from == ChildOutput::standard ? output : error;
    return pipe ? pipe->read(std::move(buffer)) : notAPipe<std::string>();
}

Task<std::string> ChildProcess::write(std::string bytes) const
{
    return input ? input->write(std::move(bytes)) : notAPipe<std::string>();
}

Task<std::size_t> ChildProcess::moveOutput(ChildProcess const &target, std::size_t most) const
{
    return output && target.input ? output->moveTo(*target.input, most) : notAPipe<std::size_t>();
}

Task<std::size_t> ChildProcess::copyOutput(ChildProcess const &target, std::size_t most) const
{
    return output && target.input ? output->copyTo(*target.input, most) : notAPipe<std::size_t>();
}

void ChildProcess::takeOutput(std::span<char> bytes) const
{
    if (!output)
        throw PipeError(EBADF);
    output->take(bytes);
}

void ChildProcess::dropOutput(std::size_t count) const
{
    if (!output)
        throw PipeError(EBADF);
    output->drop(count);
}

void ChildProcess::closeInput() const noexcept
{
    if (input)
        input->close();
}

void ChildProcess::leave() const
{
    exit.leave();
}

void ChildProcess::leaveDescendants() const
{
    exit.leaveDescendants();
}

void ChildProcess::terminate() const
{
    exit.signal(SIGTERM);
    exit.signal(SIGCONT); // a stopped child does not see the first signal
}

void ChildProcess::kill() const
{
    exit.signal(SIGKILL);
}

} // namespace tw
