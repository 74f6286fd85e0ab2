#pragma once

#include <string>
#include <string_view>

namespace tw {

/// A name in the form in which neither case nor composition counts: folded by all of Unicode, then composed, since some
/// file systems hand out names in pieces of letters. The bytes need not be UTF-8. A zero byte, which a host may claim,
/// becomes a byte that no one types.
namespace FoldedName {

/// The whole form.
std::string of(std::string_view name);

/// Writes the form of a name of usual letters to `to`, in as many bytes, but for the ASCII characters, which stay as
/// they are. False for other names, such as those with letters in pieces: `of` has their form, which takes twenty times
/// as long.
bool copyUsual(std::string_view name, char *to);

/// Brings all ASCII letters of `text` into lower case: much faster for many names at once.
void foldAscii(std::string &text);

} // namespace FoldedName

} // namespace tw
