#pragma once

/// All of the program that has a window: the `main` of the library that `tarnwick` loads for it.
///
/// By a plain name, since it is looked for when the program runs.
extern "C" [[gnu::visibility("default")]] int tarnwickWindowProgram(int argc, char **argv);
