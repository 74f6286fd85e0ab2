#include "TWEngine/Preview/PreviewFile.h"

#include "TWCore/Model/ReadError.h"
#include "TWEngine/Browsing/LocalProviderError.h"
#include "TWEngine/Runtime/Uninterrupted.h"
#include "TWEngine/Runtime/WholeFile.h"

#include <cerrno>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>

namespace tw {

PreviewFile PreviewFile::open(std::string const &path)
{
    struct stat status;
    if (path.contains('\0'))
        throw ReadError::NotReadable(path, systemText(ENOENT));
    if (::stat(path.c_str(), &status) != 0)
        throw ReadError::NotReadable(path, systemText(errno));
    PreviewFile file;
    file.kind = entryKindOfMode(status.st_mode);
    if (file.kind != EntryKind::file)
        return file;
    // Not blocking, and looked at again: it may be another one by now.
    FileDescriptor opened(
        uninterrupted([&] { return ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY); }));
    if (!opened || ::fstat(opened.get(), &status) != 0)
        throw ReadError::NotReadable(path, systemText(errno));
    file.kind = entryKindOfMode(status.st_mode);
    if (file.kind != EntryKind::file)
        return file;
    file.size = status.st_size;
    file.mtime = status.st_mtime;
    if (auto const error = WholeFile::readUpTo(opened.get(), beginningBytes, file.beginning); error != 0)
        throw ReadError::NotReadable(path, systemText(error));
    if (::lseek(opened.get(), 0, SEEK_SET) != 0)
        throw ReadError::NotReadable(path, systemText(errno));
    file.descriptor = std::move(opened);
    return file;
}

FileDescriptor PreviewFile::inMemory(std::string const &bytes)
{
    FileDescriptor file(::memfd_create("preview", MFD_CLOEXEC));
    if (!file || WholeFile::write(file.get(), bytes) != 0 || ::lseek(file.get(), 0, SEEK_SET) != 0)
        return FileDescriptor();
    return file;
}

} // namespace tw
