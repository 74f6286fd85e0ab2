#pragma once

#include <span>
#include <string>
#include <string_view>

/// Texts in command lines that the login shell of a host parses, before or without a shell that we chose.
namespace tw::ShellLiteral {

/// `text` as one word for a POSIX shell. The word is always ASCII, so that no locale can change it.
///
/// For a text with other bytes the word is a command substitution, which drops trailing line ends: a name that ends in
/// a line end cannot be written this way.
std::string posix(std::string_view text);

/// The command line that has Windows run `script`, whatever its login shell.
std::string powerShellEncoded(std::string_view script);

/// The call of a program in PowerShell with exactly these arguments. `executable` is code.
std::string powerShellInvoke(std::string_view executable, std::span<std::string const> arguments);

} // namespace tw::ShellLiteral
