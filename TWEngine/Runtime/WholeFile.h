#pragma once

#include "TWEngine/Runtime/FileDescriptor.h"

#include <cstddef>
#include <string>
#include <string_view>

/// Complete reads and writes: read(2) and write(2) may transfer only a part.
///
/// Every function blocks as long as the file does.
/// Errors: 0, or the error number.
namespace tw::WholeFile {

/// Writes all of `bytes`. On an error some of them may have been written.
[[nodiscard]] int write(int descriptor, std::string_view bytes);

/// Appends to `bytes` until it holds `length` bytes or the file ends.
[[nodiscard]] int readUpTo(int descriptor, std::size_t length, std::string &bytes);

/// Closes a written file. A network file system, or one with quotas, may report only now that it is full.
[[nodiscard]] int close(FileDescriptor file);

} // namespace tw::WholeFile
