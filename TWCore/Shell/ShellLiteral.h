#pragma once

#include <span>
#include <string>
#include <string_view>

/// Texts in command lines that the login shell of a host takes apart, before or without any shell that we chose.
namespace tw::ShellLiteral {

/// `text` as one word for a POSIX shell, in ASCII whatever is in it, so that no locale on the way can change it.
///
/// A text with other bytes than printable ASCII is printed by the host in place of the word, and that drops line ends
/// from its end: a name that ends in one cannot be told so.
std::string posix(std::string_view text);

/// The command line that has Windows run `script`, whatever its login shell.
std::string powerShellEncoded(std::string_view script);

/// The call of a program in PowerShell with these arguments, each as it is. `executable` is code.
std::string powerShellInvoke(std::string_view executable, std::span<std::string const> arguments);

} // namespace tw::ShellLiteral
