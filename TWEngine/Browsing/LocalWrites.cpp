#include "TWEngine/Browsing/LocalWrites.h"

#include "TWCore/Model/FileOperationError.h"
#include "TWEngine/Browsing/FolderAccess.h"
#include "TWEngine/Browsing/LocalProviderError.h"
#include "TWEngine/Runtime/FileDescriptor.h"

#include <gio/gio.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tw::LocalWrites {

namespace {

constexpr auto makingFolder = "create folder";
constexpr auto trashing = "move to Trash";
constexpr auto renaming = "rename";
constexpr auto writing = "writing";

struct Unreference {
    void operator()(gpointer object) const { g_object_unref(object); }
};

struct FreeError {
    void operator()(GError *error) const { g_error_free(error); }
};

/// The system would take such a path for the part before the NUL, which is another file.
void requireNameable(char const *operation, std::string const &path)
{
    if (path.contains('\0'))
        throw FileOperationError::Failed(operation, path, systemText(ENOENT));
}

/// The kernel or the file system does not know RENAME_NOREPLACE. EINVAL has other meanings too, such as a folder that
/// is moved into itself; a plain rename(2) then fails with it again.
bool isUnknownFlag(int error)
{
    return error == EINVAL || error == ENOSYS;
}

} // namespace

void makeDirectory(std::string const &path)
{
    requireNameable(makingFolder, path);
    std::error_code failure;
    std::filesystem::create_directories(path, failure);
    // Of a file that has this very name the library says that it is no directory. The name is taken, that is all.
    std::error_code none;
    if (failure == std::errc::not_a_directory && exists(std::filesystem::symlink_status(path, none)))
        failure = make_error_code(std::errc::file_exists);
    if (failure)
        throw FileOperationError::Failed(makingFolder, path, systemText(failure.value()));
}

void removeEmptyFolder(std::string const &path)
{
    requireNameable("delete", path);
    if (::rmdir(path.c_str()) != 0)
        throw FileOperationError::Failed("delete", path, systemText(errno));
}

void moveToTrash(std::string const &path)
{
    requireNameable(trashing, path);
    // GIO's own local files: its default may load modules that ask the session bus, which need not answer.
    std::unique_ptr<GFile, Unreference> const file(g_vfs_get_file_for_path(g_vfs_get_local(), path.c_str()));
    GError *failure = nullptr;
    auto const access = FolderAccess::give(AT_FDCWD, path, S_IWUSR);
    if (g_file_trash(file.get(), nullptr, &failure))
        return;
    std::unique_ptr<GError, FreeError> const error(failure);
    if (g_error_matches(error.get(), G_IO_ERROR, G_IO_ERROR_NOT_SUPPORTED) != 0)
        throw FileOperationError::NoTrash(path, error->message);
    throw FileOperationError::Failed(trashing, path, error->message);
}

Renamed rename(std::string const &from, std::string const &to, FileSystemWriter::Existing existing)
{
    requireNameable(renaming, from);
    if (to.contains('\0'))
        throw FileOperationError::Failed(renaming, from, systemText(ENOENT));
    auto const flags = existing == FileSystemWriter::Existing::stays ? RENAME_NOREPLACE : 0U;
    auto const error =
        renameWithAccess(from, [&] { return ::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), flags); });
    if (error == 0)
        return Renamed::done;
    if (error == EXDEV)
        return Renamed::isOnAnotherFileSystem;
    if (flags == 0 || !isUnknownFlag(error))
        throw FileOperationError::Failed(renaming, from, systemText(error));
    return renameAfterLooking(from, to);
}

Renamed renameAfterLooking(std::string const &from, std::string const &to)
{
    struct stat there;
    if (::lstat(to.c_str(), &there) == 0)
        throw FileOperationError::Failed(renaming, from, systemText(EEXIST));
    if (errno != ENOENT)
        throw FileOperationError::Failed(renaming, from, systemText(errno));
    auto const error = renameWithAccess(from, [&] { return ::rename(from.c_str(), to.c_str()); });
    if (error == EXDEV)
        return Renamed::isOnAnotherFileSystem;
    if (error != 0)
        throw FileOperationError::Failed(renaming, from, systemText(error));
    return Renamed::done;
}

void sync(std::string const &folder)
{
    requireNameable(writing, folder);
    FileDescriptor const opened(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!opened || ::syncfs(opened.get()) != 0)
        throw FileOperationError::Failed(writing, folder, systemText(errno));
}

} // namespace tw::LocalWrites
