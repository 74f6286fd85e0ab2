#include "TWEngine/Platform/NewPrivateFile.h"

#include "TWEngine/Runtime/WholeFile.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include <fcntl.h>
#include <unistd.h>

namespace tw {

NewPrivateFile::NewPrivateFile(std::string const &finalName)
    : target(finalName),
      name((std::filesystem::path(finalName).parent_path() / ".tw-new-XXXXXX").string()),
      file(::mkostemp(name.data(), O_CLOEXEC)), // its mode is 0600, see mkstemp(3)
      openError(file ? 0 : errno)
{
}

NewPrivateFile::~NewPrivateFile()
{
    if (file && !name.empty())
        ::unlink(name.c_str());
}

int NewPrivateFile::fill(std::string_view text) const
{
    if (openError != 0)
        return openError;
    if (auto const error = WholeFile::write(file.get(), text); error != 0)
        return error;
    return ::fsync(file.get()) == 0 ? 0 : errno;
}

int NewPrivateFile::replaceTarget()
{
    if (::rename(name.c_str(), target.c_str()) != 0)
        return errno;
    name.clear();
    return 0;
}

int NewPrivateFile::becomeTarget() const
{
    return ::link(name.c_str(), target.c_str()) == 0 ? 0 : errno;
}

} // namespace tw
