#pragma once

#include <QString>

#include <string>
#include <string_view>

/// Bytes of a name or a path as the text of a field, and back.
///
/// A byte that is no part of valid UTF-8 is U+DC00 plus the byte in the field. No text contains that character, a font
/// shows it as a replacement, and the cursor passes it like any other. So the bytes that are not edited stay as they
/// are.
namespace tw::FieldText {

QString ofBytes(std::string_view bytes);

/// Gives `bytes` for `ofBytes(bytes)`, whatever they are.
std::string bytesOf(QStringView text);

} // namespace tw::FieldText
