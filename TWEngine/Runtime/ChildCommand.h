#pragma once

#include "TWEngine/Runtime/FileDescriptor.h"

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace tw {

/// The null device: an input at its end, an output that is discarded.
struct NullEnd {};

/// A pipe whose other end we hold, see ChildProcess::read and ChildProcess::write.
struct PipeEnd {};

/// A file that is opened for the child. A file to be written is created if it is missing.
struct FileEnd {
    enum class Use { read, replace, append };

    std::string path;
    Use use;
};

/// A descriptor of this process. The child gets a copy; we keep the descriptor.
struct DescriptorEnd {
    int number;
};

/// The standard input, output or error of a child.
using ChildEnd = std::variant<NullEnd, PipeEnd, FileEnd, DescriptorEnd>;

/// Values by name; bytes.
using Environment = std::map<std::string, std::string>;

/// A copy of the environment of this process.
Environment inheritedEnvironment();

/// A program to run, with its arguments and surroundings. No shell is involved, so nothing needs to be quoted.
struct ChildCommand {
    enum class Session {
        ours, ///< that of this process, with its terminal
        own   ///< a new one: the child has no terminal, and a signal reaches its descendants too
    };

    enum class End {
        itself,     ///< it may outlive this program
        withProgram ///< it is killed when the thread that has started it ends, at the latest with this program
    };

    /// A path. With End::itself also a name, which is searched in the PATH of this process.
    std::string program = {};
    std::vector<std::string> arguments = {};     ///< without the name of the program
    std::optional<Environment> environment = {}; ///< absent: the environment of this process
    std::string workingDirectory = {};           ///< empty: the folder of this process
    /// In place of the path, an open folder: to open one may take as long as its mount takes to answer.
    std::shared_ptr<FileDescriptor const> workingFolder = {};
    ChildEnd input = NullEnd{};
    ChildEnd output = NullEnd{};
    ChildEnd error = NullEnd{};
    Session session = Session::ours;
    End end = End::itself;
};

} // namespace tw
