#pragma once

#include "TWCore/Model/Text.h"

#include <QString>

#include <string_view>

/// The catalogue of texts as they are shown.
///
/// A text in the code is its own key, also where it is formed from parts. Some of them are in the words of another
/// desktop; the words that people know from this one are put in their place here and nowhere else, where a view shows a
/// text.
namespace tw::Wording {

/// What is shown for a text of ours, UTF-8. Not for names of files and hosts, which stay as they are.
QString shown(std::string_view text);

inline QString shown(char const *text)
{
    return shown(std::string_view(text));
}

inline QString shown(std::string const &text)
{
    return shown(std::string_view(text));
}

/// The same of a text with names in it, on one line: what cannot be shown of a name has a sign in its place.
QString shown(Text const &text);

/// The same with the line ends that it has, for a message of several lines.
QString shownInLines(Text const &text);

} // namespace tw::Wording
