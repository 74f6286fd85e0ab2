#include "bench/ManyFiles.h"

#include <cstdlib>
#include <filesystem>
#include <stdexcept>

#include <fcntl.h>
#include <unistd.h>

namespace tw::bench {

ManyFiles::ManyFiles(int count)
{
    folder = (std::filesystem::temp_directory_path() / "tarnwick-bench-XXXXXX").string();
    if (!mkdtemp(folder.data()))
        throw std::runtime_error("no temporary folder could be made");
    for (int index = 0; index < count; ++index) {
        auto const path = folder + "/photo of the year " + std::to_string(index) + ".jpeg";
        auto const descriptor = open(path.c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0644);
        if (descriptor < 0)
            throw std::runtime_error("a file could not be made");
        close(descriptor);
    }
}

ManyFiles::~ManyFiles()
{
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
}

} // namespace tw::bench
