#pragma once

#include "TWEngine/Runtime/FileDescriptor.h"

#include <string>
#include <string_view>

namespace tw {

/// A new file with the mode 0600 that gets its final name in one step. The destructor removes it if it did not.
///
/// Threads: one. Every operation blocks.
/// Errors: 0, or the error number.
class NewPrivateFile {
public:
    /// In the folder of `target`, since a file changes its name in one step only within one file system. The first
    /// error of opening is returned by `fill`.
    explicit NewPrivateFile(std::string const &target);
    ~NewPrivateFile();

    NewPrivateFile(NewPrivateFile const &) = delete;
    NewPrivateFile &operator=(NewPrivateFile const &) = delete;

    /// Writes `text` to the disk. Before the file gets its name: after a power cut the name must not lead to an empty
    /// file.
    int fill(std::string_view text) const;

    /// Replaces the target, or makes it.
    int replaceTarget();

    /// Makes the target. EEXIST if the target exists.
    int becomeTarget() const;

private:
    std::string const target;
    std::string name; ///< empty when the target is replaced
    FileDescriptor const file;
    int const openError;
};

} // namespace tw
