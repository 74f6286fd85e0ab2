#pragma once

#include <chrono>
#include <functional>
#include <list>
#include <map>
#include <string>
#include <vector>

#include <sys/types.h>

namespace tw::test {

/// Reached by a hang only: a loaded machine with sanitizers is allowed to be very slow.
inline constexpr std::chrono::minutes hangLimit{1};

/// A program that the test started, with what it writes and how it ends.
///
/// Standard output and standard error are one stream here. Standard input is empty.
///
/// Lifetime: the destructor kills what still runs, and waits for its end.
/// Errors: a wait that comes to nothing fails the test and tells what the program wrote.
class Child {
public:
    /// Variables to set; those with an empty value are taken away.
    using Environment = std::map<std::string, std::string>;

    /// `arguments` begin with the program, which is looked for in the path. Throws std::system_error if it cannot be
    /// started.
    explicit Child(std::vector<std::string> arguments, Environment const &changes = {});
    ~Child();

    Child(Child const &) = delete;
    Child &operator=(Child const &) = delete;

    /// Waits for a line that `isWanted` accepts, takes it out of what was written, and answers it. Lines may come in
    /// another order than they are asked for.
    std::string waitForLine(std::function<bool(std::string const &)> const &isWanted);

    /// Whether such a line is there by now; it is taken out then.
    bool takeLine(std::function<bool(std::string const &)> const &isWanted);

    /// Whether it has closed its output, as it does when it ends.
    bool hasClosedOutput() const noexcept { return outputIsClosed; }

    /// Waits for the end: the exit status, or the negative number of the signal that killed it.
    int waitForEnd();

    void signal(int number) const;

    pid_t id() const noexcept { return pid; }

    /// Everything that was written until now.
    std::string const &output() const noexcept { return written; }

private:
    using Deadline = std::chrono::steady_clock::time_point;

    /// Reads what is there, after waiting for it until `deadline`. False: no more will come before then.
    bool readMore(Deadline deadline);

    pid_t pid = -1;
    int outputEnd = -1;
    int status = 0;
    bool hasEnded = false;
    bool outputIsClosed = false;
    std::string written;
    std::string unfinishedLine;
    std::list<std::string> lines; ///< whole ones that nobody has taken
};

/// Runs a program to its end and answers its output. Fails the test if its exit status is not 0.
std::string outputOf(std::vector<std::string> arguments, Child::Environment const &changes = {});

} // namespace tw::test
