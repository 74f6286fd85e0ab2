#include "Tarnwick/Toolkit/Dialogs/SheetDialogs.h"

#include "TWCore/Async/Cancelled.h"
#include "TWEngine/Runtime/Completion.h"
#include "Tarnwick/Toolkit/Dialogs/ApplicationSheet.h"
#include "Tarnwick/Toolkit/Dialogs/ConflictSheet.h"
#include "Tarnwick/Toolkit/Dialogs/LoginSheet.h"
#include "Tarnwick/Toolkit/Dialogs/PackSheet.h"
#include "Tarnwick/Toolkit/Dialogs/PromptSheet.h"
#include "Tarnwick/Toolkit/Dialogs/QuestionSheet.h"
#include "Tarnwick/Toolkit/Dialogs/WordsSheet.h"

namespace tw {

namespace {

using Queue = std::shared_ptr<SheetQueue>;
using Finished = Completion<int>;

/// A sheet that goes when this goes, unless the window went first.
template <class Shown>
class ShownSheet {
public:
    ShownSheet(Queue shownIn, Shown *made, SheetQueue::Kind kind) : queue(std::move(shownIn)), sheet(made)
    {
        queue->add(*made, kind);
    }

    ShownSheet(ShownSheet const &) = delete;
    ShownSheet &operator=(ShownSheet const &) = delete;

    ~ShownSheet()
    {
        if (sheet)
            queue->remove(*sheet);
    }

    QPointer<Shown> const &operator()() const { return sheet; }

private:
    Queue const queue;
    QPointer<Shown> const sheet;
};

QWidget *windowOf(Queue const &queue)
{
    auto *const window = queue->window();
    if (!window)
        throw Cancelled();
    return window;
}

/// How a sheet ends: answered, or cancelled with its window.
std::shared_ptr<Finished> endOf(Sheet &sheet)
{
    auto end = std::make_shared<Finished>();
    QObject::connect(&sheet, &QDialog::finished, [end](int code) { end->succeed(code); });
    QObject::connect(&sheet, &QObject::destroyed, [end] { end->fail(std::make_exception_ptr(Cancelled())); });
    return end;
}

Task<void> tell(Queue queue, Text message, std::string words)
{
    auto *const window = windowOf(queue);
    ShownSheet const sheet(queue, QuestionSheet::ofError(message, words, window), SheetQueue::Kind::question);
    auto const end = endOf(*sheet());
    co_await Finished::wait(end);
}

Task<void> tellDetails(Queue queue, Text title, std::string words)
{
    auto *const window = windowOf(queue);
    ShownSheet const sheet(queue, new WordsSheet(title, words, window), SheetQueue::Kind::question);
    auto const end = endOf(*sheet());
    co_await Finished::wait(end);
}

Task<std::optional<std::string>> promptIn(Queue queue, Dialogs::Prompt question)
{
    auto *const window = windowOf(queue);
    ShownSheet const sheet(queue, new PromptSheet(question, window), SheetQueue::Kind::question);
    auto const end = endOf(*sheet());
    auto const code = co_await Finished::wait(end);
    // Between its end and this, the window can have gone.
    if (!sheet())
        throw Cancelled();
    auto text = code == QDialog::Accepted ? sheet()->text() : std::string();
    co_return text.empty() ? std::nullopt : std::optional(std::move(text));
}

Task<std::optional<PackTarget>> packPromptIn(Queue queue, Dialogs::PackPrompt question)
{
    auto *const window = windowOf(queue);
    ShownSheet const sheet(queue, new PackSheet(question, window), SheetQueue::Kind::question);
    auto const end = endOf(*sheet());
    auto const code = co_await Finished::wait(end);
    if (!sheet())
        throw Cancelled();
    co_return code == QDialog::Accepted ? sheet()->target() : std::nullopt;
}

Task<Dialogs::Answer> confirmIn(Queue queue, Dialogs::Confirmation question)
{
    auto *const window = windowOf(queue);
    ShownSheet const sheet(queue, new QuestionSheet(question, window), SheetQueue::Kind::question);
    auto const end = endOf(*sheet());
    auto const code = co_await Finished::wait(end);
    co_return code == QDialog::Accepted ? Dialogs::Answer::ok : Dialogs::Answer::cancel;
}

Task<std::optional<std::size_t>> chooseIn(Queue queue, Dialogs::Choice question)
{
    auto *const window = windowOf(queue);
    ShownSheet const sheet(queue, new QuestionSheet(question, window), SheetQueue::Kind::question);
    auto const end = endOf(*sheet());
    co_await Finished::wait(end);
    if (!sheet())
        throw Cancelled();
    co_return sheet()->wayTaken();
}

Task<std::optional<std::string>> chooseApplicationIn(Queue queue, Dialogs::ApplicationChoice question)
{
    auto *const window = windowOf(queue);
    ShownSheet const sheet(queue, new ApplicationSheet(question, window), SheetQueue::Kind::question);
    auto const end = endOf(*sheet());
    auto const code = co_await Finished::wait(end);
    if (!sheet())
        throw Cancelled();
    co_return code == QDialog::Accepted ? std::optional(sheet()->chosen()) : std::nullopt;
}

Task<Dialogs::Resolution> resolveIn(Queue queue, Dialogs::Conflicts question)
{
    auto *const window = windowOf(queue);
    ShownSheet const sheet(queue, new ConflictSheet(std::move(question), window), SheetQueue::Kind::question);
    auto const end = endOf(*sheet());
    auto const code = co_await Finished::wait(end);
    if (!sheet())
        throw Cancelled();
    co_return code == QDialog::Accepted ? std::optional(sheet()->answers()) : std::nullopt;
}

Task<std::optional<LoginAnswer>> askIn(Queue queue, LoginQuestion question)
{
    auto *const window = windowOf(queue);
    ShownSheet const sheet(queue, new LoginSheet(question, window), SheetQueue::Kind::question);
    auto const end = endOf(*sheet());
    auto const code = co_await Finished::wait(end);
    if (!sheet())
        throw Cancelled();
    if (code != QDialog::Accepted)
        co_return std::nullopt;
    co_return sheet()->answer();
}

/// Work goes on when the window has closed, and is then seen nowhere.
class ShownWork final : public Progress {
public:
    ShownWork(std::shared_ptr<JobList> list, std::string title, std::function<void()> onCancel)
        : works(std::move(list)), work(works->begin(std::move(title), std::move(onCancel)))
    {
    }

    ShownWork(ShownWork const &) = delete;
    ShownWork &operator=(ShownWork const &) = delete;

    ~ShownWork() override { works->end(work); }

    void update(ProgressState const &state) override { works->update(*work, state); }

    void conclude(std::string words) override { work->conclusion = std::move(words); }

private:
    std::shared_ptr<JobList> const works;
    std::shared_ptr<Job> const work;
};

} // namespace

Task<void> SheetDialogs::error(Text message, std::string words)
{
    return tell(queue, std::move(message), std::move(words));
}

Task<void> SheetDialogs::details(Text title, std::string words)
{
    return tellDetails(queue, std::move(title), std::move(words));
}

Task<std::optional<std::string>> SheetDialogs::prompt(Prompt question)
{
    return promptIn(queue, std::move(question));
}

Task<std::optional<PackTarget>> SheetDialogs::packPrompt(PackPrompt question)
{
    return packPromptIn(queue, std::move(question));
}

Task<Dialogs::Answer> SheetDialogs::confirm(Confirmation question)
{
    return confirmIn(queue, std::move(question));
}

Task<std::optional<std::size_t>> SheetDialogs::choose(Choice question)
{
    return chooseIn(queue, std::move(question));
}

Task<std::optional<std::string>> SheetDialogs::chooseApplication(ApplicationChoice question)
{
    return chooseApplicationIn(queue, std::move(question));
}

Task<Dialogs::Resolution> SheetDialogs::resolve(Conflicts question)
{
    return resolveIn(queue, std::move(question));
}

Task<std::optional<LoginAnswer>> SheetDialogs::ask(LoginQuestion question)
{
    return askIn(queue, std::move(question));
}

std::unique_ptr<Progress> SheetDialogs::progress(std::string title, std::function<void()> onCancel)
{
    return std::make_unique<ShownWork>(works, std::move(title), std::move(onCancel));
}

} // namespace tw
