// A file system that is slow or that never answers, for tests and benchmarks:
//
//   test_mount MOUNT_POINT slow FILES MICROSECONDS   a folder of files, whose attributes take that long each
//   test_mount MOUNT_POINT silent                    answers nothing
//
// It ends when its standard input does, and when the thread ends that started it: a program that crashes while other
// threads of it wait for this file system keeps its pipes until they are released. It is unmounted at its end.
#define FUSE_USE_VERSION 312

#include <cerrno>
#include <charconv>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <thread>

#include <fuse.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr std::string_view namePrefix = "file";

struct {
    bool isSilent = false;
    int files = 0;
    std::chrono::microseconds delay{0};
} settings;

void neverAnswer()
{
    for (;;)
        ::pause();
}

/// Whether it is the path of a file that there is.
bool isFile(std::string_view path)
{
    if (!path.starts_with('/') || !path.substr(1).starts_with(namePrefix))
        return false;
    path.remove_prefix(1 + namePrefix.size());
    int number = -1;
    auto const parsed = std::from_chars(path.data(), path.data() + path.size(), number);
    return parsed.ec == std::errc() && parsed.ptr == path.data() + path.size() && number >= 0 &&
           number < settings.files;
}

int getAttributes(char const *path, struct stat *status, fuse_file_info * /*file*/)
{
    if (settings.isSilent)
        neverAnswer();
    *status = {};
    if (std::string_view(path) == "/") {
        status->st_mode = S_IFDIR | 0755;
        status->st_nlink = 2;
        return 0;
    }
    if (!isFile(path))
        return -ENOENT;
    std::this_thread::sleep_for(settings.delay);
    status->st_mode = S_IFREG | 0644;
    status->st_nlink = 1;
    status->st_size = static_cast<off_t>(std::strlen(path));
    return 0;
}

int openDirectory(char const * /*path*/, fuse_file_info * /*file*/)
{
    if (settings.isSilent)
        neverAnswer();
    return 0;
}

int readDirectory(char const * /*path*/, void *buffer, fuse_fill_dir_t fill, off_t /*offset*/,
                  fuse_file_info * /*file*/, fuse_readdir_flags /*flags*/)
{
    fill(buffer, ".", nullptr, 0, fuse_fill_dir_flags{});
    fill(buffer, "..", nullptr, 0, fuse_fill_dir_flags{});
    for (int number = 0; number < settings.files; ++number)
        fill(buffer, (std::string(namePrefix) + std::to_string(number)).c_str(), nullptr, 0, fuse_fill_dir_flags{});
    return 0;
}

void *begin(fuse_conn_info * /*connection*/, fuse_config *configuration)
{
    // The kernel remembers nothing, so that every question comes here.
    configuration->entry_timeout = 0;
    configuration->attr_timeout = 0;
    configuration->negative_timeout = 0;
    return nullptr;
}

void endWithInput()
{
    char byte = 0;
    while (::read(STDIN_FILENO, &byte, 1) > 0) {
    }
    ::_exit(0);
}

} // namespace

int main(int argc, char **argv)
{
    if (argc == 5 && std::string_view(argv[2]) == "slow") {
        settings.files = std::atoi(argv[3]);
        settings.delay = std::chrono::microseconds(std::atoi(argv[4]));
    } else if (argc == 3 && std::string_view(argv[2]) == "silent") {
        settings.isSilent = true;
    } else {
        std::fputs("usage: test_mount MOUNT_POINT slow FILES MICROSECONDS | silent\n", stderr);
        return EXIT_FAILURE;
    }
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    std::thread(endWithInput).detach();
    fuse_operations operations{};
    operations.getattr = getAttributes;
    operations.opendir = openDirectory;
    operations.readdir = readDirectory;
    operations.init = begin;
    // fusermount3 unmounts it however this process ends. More threads than a listing has.
    std::string arguments[] = {argv[0], "-f", "-oauto_unmount,max_threads=32,max_idle_threads=32,fsname=test_mount",
                               argv[1]};
    char *pointers[] = {arguments[0].data(), arguments[1].data(), arguments[2].data(), arguments[3].data()};
    return fuse_main(4, pointers, &operations, nullptr);
}
