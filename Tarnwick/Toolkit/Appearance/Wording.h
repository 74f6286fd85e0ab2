#pragma once

#include <QString>

#include <string_view>

/// The catalogue of texts as they are shown.
///
/// A text in the code is its own key. Some of them are in the words of another desktop; the words that people know from
/// this one are put in their place here and nowhere else, where a view shows a text.
namespace tw::Wording {

/// What is shown for a text of ours, UTF-8. Not for names of files and hosts, which are nobody's to word.
QString shown(std::string_view text);

} // namespace tw::Wording
