#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace tw::test {

/// A folder for one test. The destructor removes it, whatever the permissions of its content.
class TemporaryFolder {
public:
    TemporaryFolder();

    /// In the folder `base`.
    explicit TemporaryFolder(std::string const &base);

    ~TemporaryFolder();

    TemporaryFolder(TemporaryFolder const &) = delete;
    TemporaryFolder &operator=(TemporaryFolder const &) = delete;

    std::string const &path() const noexcept { return root; }

    /// The path of an entry. `name` is bytes.
    std::string path(std::string_view name) const { return root + '/' + std::string(name); }

    /// Each makes an entry and returns its path.
    std::string file(std::string_view name, std::string_view content = {}) const;
    std::string folder(std::string_view name) const;
    std::string link(std::string_view name, std::string const &target) const;

private:
    std::string root;
};

/// A folder for temporary files that does not lie on the file system of `path`. Throws if this machine has none.
std::string anotherFileSystem(std::string const &path);

/// The whole content of a file.
std::string contentOf(std::string const &path);

} // namespace tw::test
