// A password database that never answers, for a program that this library is preloaded into.
#include <pwd.h>
#include <unistd.h>

namespace {

[[noreturn]] void hang()
{
    for (;;)
        ::pause();
}

} // namespace

extern "C" {

[[gnu::visibility("default")]] passwd *getpwuid(uid_t /*user*/)
{
    hang();
}

[[gnu::visibility("default")]] passwd *getpwnam(char const * /*name*/)
{
    hang();
}

[[gnu::visibility("default")]] int getpwuid_r(uid_t /*user*/, passwd * /*record*/, char * /*texts*/, size_t /*bytes*/,
                                              passwd ** /*found*/)
{
    hang();
}

[[gnu::visibility("default")]] int getpwnam_r(char const * /*name*/, passwd * /*record*/, char * /*texts*/,
                                              size_t /*bytes*/, passwd ** /*found*/)
{
    hang();
}
}
