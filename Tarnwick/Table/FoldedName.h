#pragma once

#include <string>
#include <string_view>

namespace tw {

/// Stands for a zero byte in a folded name: a host may claim one. No one types it.
inline constexpr char zeroByteInName = '\1';

/// Appends a name in the form in which neither case nor composition counts: folded by all of Unicode, then composed,
/// since some file systems hand out names in pieces of letters. The bytes need not be UTF-8.
///
/// Names of usual letters cost little more than their copying. Others go through ICU, which takes twenty times as long.
void appendFolded(std::string &text, std::string_view name);

} // namespace tw
