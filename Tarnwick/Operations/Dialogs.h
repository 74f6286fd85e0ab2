#pragma once

#include "TWCore/Async/Task.h"
#include "TWCore/Model/Text.h"
#include "TWEngine/Applications/Application.h"
#include "Tarnwick/Operations/NameConflict.h"
#include "Tarnwick/Operations/PackTarget.h"
#include "Tarnwick/Operations/Progress.h"

#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace tw {

/// What an operation asks and tells the user: questions that stand over one window, one at a time, the others queued.
///
/// Threads: main context only; a question suspends its caller until it is answered, and nothing else.
/// Lifetime: shared by the operations that ask. The window may go first.
/// Cancellation: a caller that is stopped takes its question with it. When the window closes, every question over it
/// and every later one throws Cancelled.
/// Errors: all texts are UTF-8 and may have several lines; names of files come from `describe` or `onOneLine`.
class Dialogs {
public:
    /// What is wrong with a text, in words for the user; nothing if it will do.
    using Objection = std::function<std::optional<std::string>(std::string_view text)>;

    struct Prompt {
        std::string title;
        std::string message;
        std::string initial; ///< any bytes; those that the user does not change are in the answer as they are
        std::string okTitle;
        /// Asked when the user confirms, with the trimmed text. An objection is shown at the text, which stays to be
        /// corrected. None: an empty text is no answer.
        Objection objection = {};
    };

    enum class Danger { harmless, destructive };

    struct Confirmation {
        std::string title;
        std::string message;
        std::string okTitle;
        Danger danger = Danger::harmless; ///< what is destructive is never what Return answers
    };

    enum class Answer { cancel, ok };

    struct Choice {
        std::string title;
        std::string message;
        std::vector<std::string> ways; ///< the texts of the buttons, at least one; Return takes the first
    };

    virtual ~Dialogs() = default;

    /// Says that something has failed, and ends when the user has seen it. `words` are the last lines of the program
    /// that failed, of any bytes; if there are any, the user can look at them there.
    virtual Task<void> error(Text message, std::string words = {}) = 0;

    /// Shows the words of a program or a host whole, to read and to copy. Ends when the user closes them.
    virtual Task<void> details(Text title, std::string words) = 0;

    /// The text without the white space around it; nothing if the user cancels or leaves it empty.
    virtual Task<std::optional<std::string>> prompt(Prompt question) = 0;

    struct PackPrompt {
        std::string title;
        std::string message;
        std::string directory;              ///< that is offered
        std::string stem;                   ///< the name that is offered, without an extension
        std::vector<ArchiveFormat> formats; ///< at least one; the first is offered
    };

    /// Under which name and in which format to pack; nothing if the user cancels or leaves the name empty.
    virtual Task<std::optional<PackTarget>> packPrompt(PackPrompt question) = 0;

    virtual Task<Answer> confirm(Confirmation question) = 0;

    /// The index of the way that the user takes; nothing if the user cancels.
    virtual Task<std::optional<std::size_t>> choose(Choice question) = 0;

    struct ApplicationChoice {
        std::string file = {};                   ///< the name
        std::vector<Application> suggested = {}; ///< the usual one first
        std::vector<Application> others = {};    ///< by name
    };

    /// The identifier of the program that a file is to be opened with; nothing if the user cancels.
    virtual Task<std::optional<std::string>> chooseApplication(ApplicationChoice question) = 0;

    struct Conflicts {
        std::string title;
        std::string message;
        std::vector<NameConflict> names; ///< at least one
    };

    /// One for each of the names, in their order; nothing if the user cancels.
    using Resolution = std::optional<std::vector<NameConflict::Answer>>;

    /// What to do with each of the names. Return never means to replace.
    virtual Task<Resolution> resolve(Conflicts question) = 0;

    /// Shows work under way until the handle goes. `onCancel` runs once, if the user calls the work off. A question
    /// goes before it.
    virtual std::unique_ptr<Progress> progress(std::string title, std::function<void()> onCancel) = 0;

    /// Names for a message: the one there is, or the first `limit`, each on a line, and how many more there are.
    static std::string describe(std::span<std::string const> names, std::size_t limit);
};

} // namespace tw
