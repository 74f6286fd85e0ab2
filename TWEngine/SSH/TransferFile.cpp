#include "TWEngine/SSH/TransferFile.h"

#include "TWCore/Model/ReadError.h"
#include "TWEngine/Runtime/EngineRuntime.h"
#include "TWEngine/Runtime/WholeFile.h"

#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tw {

namespace {

/// A link to a file means the file.
constexpr auto lastLink = FileLanes::LastLink::follow;

TransferFile openNow(std::string const &path, TransferFile::Purpose purpose)
{
    constexpr mode_t asTheUserWants = 0666; // less the umask
    auto const flags = purpose == TransferFile::Purpose::toRead ? O_RDONLY : O_WRONLY | O_CREAT | O_TRUNC;
    // Not blocking: a pipe with nobody at its other end would hold a worker without end.
    TransferFile file{FileDescriptor(::open(path.c_str(), flags | O_CLOEXEC | O_NOCTTY | O_NONBLOCK, asTheUserWants)),
                      {}};
    struct stat status;
    // A folder opens as well, and would be read as a file without bytes.
    if (!file.descriptor || ::fstat(file.descriptor.get(), &status) != 0 || S_ISDIR(status.st_mode) ||
        S_ISFIFO(status.st_mode) || ::fcntl(file.descriptor.get(), F_SETFL, 0) != 0)
        return TransferFile{FileDescriptor(), {}};
    // What the kernel makes up while it is read, as below /proc, says that it has no bytes.
    if (S_ISREG(status.st_mode) && status.st_size > 0)
        file.size = status.st_size;
    return file;
}

[[noreturn]] void throwAbout(std::string const &path, int error)
{
    throw ReadError::NotReadable(path, std::generic_category().message(error));
}

} // namespace

Task<std::shared_ptr<TransferFile>> TransferFile::open(EngineRuntime &engine, std::string path, Purpose purpose)
{
    return engine.files().run(path, lastLink, WorkPriority::interactive,
                              [path, purpose](std::string const & /*place*/) {
                                  auto opened = std::make_shared<TransferFile>(openNow(path, purpose));
                                  return opened->descriptor ? opened : nullptr;
                              });
}

OneShotCommand::Taker TransferFile::writer(EngineRuntime &engine, std::shared_ptr<TransferFile> file, std::string path)
{
    return [&engine, file = std::move(file), path = std::move(path)](std::string bytes) {
        return engine.files().run(path, lastLink, WorkPriority::interactive,
                                  [file, path, bytes = std::move(bytes)](std::string const & /*place*/) mutable {
                                      if (auto const error = WholeFile::write(file->descriptor.get(), bytes);
                                          error != 0)
                                          throwAbout(path, error);
                                      return std::move(bytes);
                                  });
    };
}

Task<void> TransferFile::finish(EngineRuntime &engine, std::shared_ptr<TransferFile> file, std::string path)
{
    return engine.files().run(path, lastLink, WorkPriority::interactive,
                              [file = std::move(file), path](std::string const & /*place*/) {
                                  if (auto const error = WholeFile::close(std::move(file->descriptor)); error != 0)
                                      throwAbout(path, error);
                              });
}

} // namespace tw
