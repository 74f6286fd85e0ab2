#pragma once

#include "TWEngine/Runtime/Completion.h"
#include "Tarnwick/Operations/Dialogs.h"

#include <vector>

namespace tw::test {

/// Questions that wait until the test answers them. For one thread.
class FakeDialogs final : public Dialogs {
public:
    template <class Question, class Value>
    struct Asked {
        Question question;
        std::shared_ptr<Completion<Value>> end;

        /// The user answers.
        void answer(Value value) const { end->succeed(std::move(value)); }

        void cancel() const { end->fail(std::make_exception_ptr(Cancelled())); }
    };

    Task<void> error(Text message, std::string words = {}) override
    {
        wordsOfErrors.push_back(std::move(words));
        return seen(note(errors, message.english()));
    }

    Task<void> details(Text title, std::string words) override
    {
        return seen(note(detailsShown, Details{title.english(), std::move(words)}));
    }

    Task<std::optional<std::string>> prompt(Prompt question) override
    {
        return Completion<std::optional<std::string>>::wait(note(prompts, std::move(question)));
    }

    Task<std::optional<PackTarget>> packPrompt(PackPrompt question) override
    {
        return Completion<std::optional<PackTarget>>::wait(note(packPrompts, std::move(question)));
    }

    Task<Answer> confirm(Confirmation question) override
    {
        return Completion<Answer>::wait(note(confirmations, std::move(question)));
    }

    Task<std::optional<std::size_t>> choose(Choice question) override
    {
        return Completion<std::optional<std::size_t>>::wait(note(waysAsked, std::move(question)));
    }

    Task<std::optional<std::string>> chooseApplication(ApplicationChoice question) override
    {
        return Completion<std::optional<std::string>>::wait(note(choices, std::move(question)));
    }

    Task<Resolution> resolve(Conflicts question) override
    {
        return Completion<Resolution>::wait(note(conflicts, std::move(question)));
    }

    std::unique_ptr<Progress> progress(std::string title, std::function<void()> onCancel) override
    {
        works.push_back(std::make_shared<Work>(Work{.title = std::move(title), .cancel = std::move(onCancel)}));
        return std::make_unique<Shown>(works.back());
    }

    /// What the user has seen of some work.
    struct Work {
        std::string title;
        std::function<void()> cancel; ///< the user calls the work off
        std::vector<ProgressState> states = {};
        std::string conclusion = {};
        bool isUnderWay = true;
    };

    struct Details {
        std::string title;
        std::string words;
    };

    /// The window closes: what has not been answered is cancelled.
    void close() const
    {
        for (auto const &each : prompts)
            each.cancel();
        for (auto const &each : packPrompts)
            each.cancel();
        for (auto const &each : confirmations)
            each.cancel();
        for (auto const &each : waysAsked)
            each.cancel();
        for (auto const &each : choices)
            each.cancel();
        for (auto const &each : conflicts)
            each.cancel();
        for (auto const &each : errors)
            each.cancel();
        for (auto const &each : detailsShown)
            each.cancel();
    }

    // Those asked so far, answered or not.
    std::vector<Asked<Prompt, std::optional<std::string>>> prompts;
    std::vector<Asked<PackPrompt, std::optional<PackTarget>>> packPrompts;
    std::vector<Asked<Confirmation, Answer>> confirmations;
    std::vector<Asked<Choice, std::optional<std::size_t>>> waysAsked;
    std::vector<Asked<ApplicationChoice, std::optional<std::string>>> choices;
    std::vector<Asked<Conflicts, Resolution>> conflicts;
    std::vector<Asked<std::string, Done>> errors;
    std::vector<std::string> wordsOfErrors; ///< behind "Details", one for each error; empty: none were offered
    std::vector<Asked<Details, Done>> detailsShown;
    std::vector<std::shared_ptr<Work>> works;

private:
    class Shown final : public Progress {
    public:
        explicit Shown(std::shared_ptr<Work> shown) : work(std::move(shown)) {}

        Shown(Shown const &) = delete;
        Shown &operator=(Shown const &) = delete;

        ~Shown() override { work->isUnderWay = false; }

        void update(ProgressState const &state) override { work->states.push_back(state); }

        void conclude(std::string words) override { work->conclusion = std::move(words); }

    private:
        std::shared_ptr<Work> const work;
    };

    template <class Question, class Value>
    static std::shared_ptr<Completion<Value>> note(std::vector<Asked<Question, Value>> &asked, Question question)
    {
        auto end = std::make_shared<Completion<Value>>();
        asked.push_back({std::move(question), end});
        return end;
    }

    static Task<void> seen(std::shared_ptr<Completion<Done>> end) { co_await Completion<Done>::wait(end); }
};

} // namespace tw::test
