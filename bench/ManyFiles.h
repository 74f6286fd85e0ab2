#pragma once

#include <string>

namespace tw::bench {

/// A folder of empty files, gone with the object.
class ManyFiles {
public:
    explicit ManyFiles(int count);
    ~ManyFiles();

    ManyFiles(ManyFiles const &) = delete;
    ManyFiles &operator=(ManyFiles const &) = delete;

    std::string const &path() const noexcept { return folder; }

private:
    std::string folder;
};

} // namespace tw::bench
