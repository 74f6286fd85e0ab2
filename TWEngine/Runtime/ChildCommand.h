#pragma once

#include <map>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace tw {

/// The null device: an input at its end, an output that nobody sees.
struct NullEnd {};

/// A pipe whose other end is ours, see ChildProcess::read and ChildProcess::write.
struct PipeEnd {};

/// A file that is opened for the child. One that is written is created if need be.
struct FileEnd {
    enum class Use { read, replace, append };

    std::string path;
    Use use;
};

/// What a descriptor of ours refers to. It stays ours; the child gets a copy.
struct DescriptorEnd {
    int number;
};

/// What one of a child's standard input, output and error is.
using ChildEnd = std::variant<NullEnd, PipeEnd, FileEnd, DescriptorEnd>;

/// Values by name; bytes.
using Environment = std::map<std::string, std::string>;

/// The environment of this process, for adding to.
Environment inheritedEnvironment();

/// A program to run and what it is run with. Nothing passes through a shell, so nothing needs to be quoted.
struct ChildCommand {
    enum class Group {
        ours, ///< that of this process
        own   ///< a new one, so that a signal reaches what the child has started as well
    };

    std::string program = {};                    ///< a path, or a name that is looked up in the PATH of this process
    std::vector<std::string> arguments = {};     ///< without the program's own name
    std::optional<Environment> environment = {}; ///< absent: this process's
    std::string workingDirectory = {};           ///< empty: this process's
    ChildEnd input = NullEnd{};
    ChildEnd output = NullEnd{};
    ChildEnd error = NullEnd{};
    Group group = Group::ours;
};

} // namespace tw
