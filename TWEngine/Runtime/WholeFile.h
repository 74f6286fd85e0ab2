#pragma once

#include "TWEngine/Runtime/FileDescriptor.h"

#include <cstddef>
#include <string>
#include <string_view>

/// What read(2), write(2) and close(2) may do in part, done until there is no more to do.
///
/// All block, as long as the file does. Errors: 0, or the error number.
namespace tw::WholeFile {

/// Writes all of `bytes`. On an error some of them may have been written.
[[nodiscard]] int write(int descriptor, std::string_view bytes);

/// Reads on into `bytes` until it holds `length` or the file ends.
[[nodiscard]] int readUpTo(int descriptor, std::size_t length, std::string &bytes);

/// Closes what was written to. A file system across a network, or with quotas, may say only now that there was no room.
[[nodiscard]] int close(FileDescriptor file);

} // namespace tw::WholeFile
