#include "TWEngine/Applications/DesktopExec.h"

#include <glib.h>

#include <array>
#include <memory>
#include <string_view>

namespace tw::DesktopExec {

namespace {

using Words = std::vector<std::string>;

struct FreeWords {
    void operator()(gchar **words) const noexcept { g_strfreev(words); }
};

struct FreeText {
    void operator()(gchar *text) const noexcept { g_free(text); }
};

Words wordsOf(std::string const &line)
{
    gint count = 0;
    gchar **found = nullptr;
    if (!g_shell_parse_argv(line.c_str(), &count, &found, nullptr))
        return {};
    std::unique_ptr<gchar *, FreeWords> const owned(found);
    return {found, found + count};
}

std::string addressOf(std::string const &path)
{
    std::unique_ptr<gchar, FreeText> const address(g_filename_to_uri(path.c_str(), nullptr, nullptr));
    return address ? address.get() : "";
}

/// Replaces the codes in one word.
class Expansion {
public:
    Expansion(Entry const &from, std::optional<std::string> const &file) : entry(from), path(file) {}

    bool hasTakenFile() const noexcept { return tookFile; }

    void append(Words &command, std::string const &word)
    {
        if (word == "%i") {
            if (!entry.icon.empty())
                command.insert(command.end(), {"--icon", entry.icon});
            return;
        }
        auto const text = expanded(word);
        // A word that was nothing but a code without a value is no argument.
        if (!text.empty() || word.empty() || !word.starts_with('%'))
            command.push_back(text);
    }

private:
    std::string expanded(std::string_view word)
    {
        std::string text;
        for (std::size_t index = 0; index < word.size(); ++index) {
            if (word[index] == '%' && index + 1 < word.size())
                text += valueOf(word[++index]);
            else
                text += word[index];
        }
        return text;
    }

    std::string valueOf(char code)
    {
        switch (code) {
        case 'f':
        case 'F':
            tookFile = true;
            return path.value_or("");
        case 'u':
        case 'U':
            tookFile = true;
            return path ? addressOf(*path) : "";
        case 'c':
            return entry.name;
        case 'k':
            return entry.file;
        case '%':
            return "%";
        default:
            return {}; // deprecated codes
        }
    }

    Entry const &entry;
    std::optional<std::string> const &path;
    bool tookFile = false;
};

} // namespace

Words commandLine(Entry const &entry, std::optional<std::string> const &path)
{
    Words command;
    Expansion expansion(entry, path);
    for (auto const &word : wordsOf(entry.exec))
        expansion.append(command, word);
    if (!command.empty() && path && !expansion.hasTakenFile())
        command.push_back(*path);
    return command;
}

Words inTerminal(Words command, std::function<bool(std::string const &program)> const &isInstalled)
{
    struct Terminal {
        char const *program;
        char const *beforeCommand; ///< null: the command follows at once
    };

    // The user's choice, that of Debian's administrator, and those of the desktops.
    constexpr std::array<Terminal, 9> terminals{{{"xdg-terminal-exec", nullptr},
                                                 {"x-terminal-emulator", "-e"},
                                                 {"gnome-terminal", "--"},
                                                 {"konsole", "-e"},
                                                 {"xfce4-terminal", "-x"},
                                                 {"mate-terminal", "-x"},
                                                 {"foot", nullptr},
                                                 {"kitty", nullptr},
                                                 {"xterm", "-e"}}};
    for (auto const &terminal : terminals) {
        if (!isInstalled(terminal.program))
            continue;
        Words all{terminal.program};
        if (terminal.beforeCommand)
            all.emplace_back(terminal.beforeCommand);
        all.insert(all.end(), std::make_move_iterator(command.begin()), std::make_move_iterator(command.end()));
        return all;
    }
    return {};
}

} // namespace tw::DesktopExec
