#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace tw::test {

/// A folder of the test's own, gone with the object, whatever was done to permissions in it.
class TemporaryFolder {
public:
    TemporaryFolder();
    ~TemporaryFolder();

    TemporaryFolder(TemporaryFolder const &) = delete;
    TemporaryFolder &operator=(TemporaryFolder const &) = delete;

    std::string const &path() const noexcept { return root; }

    /// The path of something in it. `name` is bytes.
    std::string path(std::string_view name) const { return root + '/' + std::string(name); }

    /// Each answers the path of what it made.
    std::string file(std::string_view name, std::string_view content = {}) const;
    std::string folder(std::string_view name) const;
    std::string link(std::string_view name, std::string const &target) const;

private:
    std::string root;
};

/// The whole content of a file.
std::string contentOf(std::string const &path);

} // namespace tw::test
