#include "TWEngine/Shell/ShellHandshake.h"

#include "TWCore/Model/DisplayText.h"
#include "TWCore/Model/Trimmed.h"
#include "TWCore/Shell/ShellDialect.h"

namespace tw {

namespace {

/// Takes the first field off the front of `text`; fields are separated by tabs. Behind the last one, fields are empty.
std::string_view takeField(std::string_view &text)
{
    auto const length = std::min(text.find('\t'), text.size());
    auto const field = text.substr(0, length);
    text.remove_prefix(std::min(length + 1, text.size()));
    return field;
}

} // namespace

void ShellHandshake::take(std::string_view payload)
{
    bool const isUtf8 = repaired(payload) == payload;
    if (!isUtf8)
        return;
    if (auto const echo = payload.find(firstCommandEcho()); echo != std::string_view::npos)
        payload.remove_prefix(echo + firstCommandEcho().size());
    auto text = trimmed(payload);
    if (auto const field = takeField(text); !field.empty())
        implementation = field;
    // On Windows this is a drive's path, which is kept out on purpose: there a pane starts at the list of the drives.
    if (auto const field = takeField(text); field.starts_with('/'))
        startDirectory = field;
    if (auto const field = takeField(text); !field.empty())
        archiveTools = field;
}

} // namespace tw
