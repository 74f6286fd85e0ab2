// The executable: answers ssh, or loads the library with the window and becomes that.
//
// Both are one file, since who asks for a password is known by the file that it runs. The library is not linked, so
// that no toolkit is loaded, and none of its code has run, in a process that has a password in its memory.

#include "TWEngine/Passwords/Askpass.h"
#include "Tarnwick/App/WindowProgram.h"

#include <cstdio>
#include <cstdlib>

#include <dlfcn.h>

int main(int argc, char **argv)
{
    if (auto const status = tw::Askpass::run({argv, argv + argc}))
        return *status;
    // Never closed: the toolkit lives until the process ends.
    auto *const library = dlopen("$ORIGIN/" TARNWICK_WINDOW_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    auto *const program = library ? dlsym(library, "tarnwickWindowProgram") : nullptr;
    if (!program) {
        std::fprintf(stderr, "tarnwick: %s\n", dlerror());
        return EXIT_FAILURE;
    }
    return reinterpret_cast<decltype(&tarnwickWindowProgram)>(program)(argc, argv);
}
