#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace tw {

/// A text for a person, until it is shown: an English key, and what stands for each place in it.
///
/// The key is what a catalogue of texts knows, so it holds nothing that changes: names, numbers and other texts are
/// arguments. A place is "%@", "%d" or any other conversion of that form; each takes the next argument, which is a text
/// by then. "%%" is a per cent sign.
class Text {
public:
    Text() = default;

    /// A key of ours without arguments.
    Text(char const *words) : key(words) {}

    /// Words that no catalogue knows: a name, a number, what a host said.
    Text(std::string verbatim) : key(std::move(verbatim)), kind(Kind::verbatim) {}

    Text(char const *words, std::vector<Text> values) : key(words), arguments(std::move(values)) {}

    /// Words that a catalogue may know as a whole, and that have no places: what an error says, which may be ours.
    static Text ofWords(std::string words);

    /// One text behind the other.
    static Text sequence(std::vector<Text> parts);

    bool isEmpty() const { return english().empty(); }

    /// What a catalogue has for a key; the key itself if it has nothing.
    using Catalogue = std::function<std::string_view(std::string_view key)>;

    /// The whole text in the words of a catalogue. Names in it are bytes still, to be repaired where they are shown.
    std::string inWordsOf(Catalogue const &catalogue) const;

    std::string english() const;

    friend bool operator==(Text const &a, Text const &b) { return a.english() == b.english(); }

private:
    enum class Kind { withPlaces, words, verbatim };

    std::string key;
    std::vector<Text> arguments;
    Kind kind = Kind::withPlaces;
};

} // namespace tw
