#pragma once

#include <optional>
#include <string>
#include <string_view>

/// Bytes as text of 64 signs, by the alphabet with "+" and "/" and with padding.
namespace tw::Base64 {

std::string encode(std::string_view bytes);

/// The bytes of a text that is nothing but base64, on one line; else nothing.
std::optional<std::string> decode(std::string_view text);

} // namespace tw::Base64
