#include "TWEngine/Viewing/HostSearch.h"

#include "TWCore/Async/ChildTask.h"
#include "TWCore/Shell/EndableCommand.h"
#include "TWEngine/Platform/RandomDigits.h"
#include "TWEngine/Runtime/EngineRuntime.h"
#include "TWEngine/Transfer/HostWork.h"

#include <algorithm>

namespace tw::HostSearch {

namespace {

using FileSearch::Answer;
using FileSearch::Question;

/// A slower disk is taken for one that has got stuck.
constexpr std::int64_t leastBytesPerSecond = 1 << 20;

/// Beside that: a step is chosen by how fast the one before was, and the file may have been in memory so far.
constexpr std::chrono::minutes patience(5);

/// Before the first question how far a search is, too: a short one is over by then.
constexpr std::chrono::seconds betweenQuestions(1);

struct Search {
    EngineRuntime &engine;
    std::shared_ptr<CommandHost> host;
    std::string path;
    Question question;
    FileSearch::Progress progress;
};

std::chrono::seconds limitOf(Question const &question)
{
    auto const bytes = std::max(question.part.to, question.farthest) - question.part.from;
    return patience + std::chrono::seconds(bytes / leastBytesPerSecond);
}

/// Asks how far a search is, until it is stopped.
Task<void> watch(Search what, std::string token)
{
    auto const context = co_await currentContext();
    for (;;) {
        co_await what.engine.clock()->sleep(betweenQuestions);
        HostCommand question{.text = EndableCommand::position(token), .onLoss = CommandOnLoss::fails};
        auto const outcome = co_await outcomeOf(what.host->runCommand(std::move(question)));
        if (context.stop.stop_requested())
            co_return;
        if (auto const offset = outcome.value ? FileSearch::position(outcome.value->output) : std::nullopt)
            what.progress(*offset);
    }
}

Task<Answer> ask(Search what)
{
    constexpr int tokenDigits = 16;
    auto const dialect = co_await what.host->dialect();
    auto const script = FileSearch::text(dialect, what.path, what.question);
    if (!script)
        co_return Answer();
    auto const token = randomDigits(tokenDigits);
    auto text = EndableCommand::text(token, {"grep"}, *script);
    auto const context = co_await currentContext();
    std::optional<ChildTask<void>> watching;
    if (what.progress && what.question.farthest > 0)
        watching.emplace(ChildTask<void>::start(context, watch(what, token)));
    auto const result = co_await HostWork::run(what.engine, what.host, token, std::move(text), CommandEffect::none,
                                               limitOf(what.question));
    co_return FileSearch::answer(result.output, what.question);
}

Task<Answer> runOn(Search what)
{
    auto answer = co_await ask(what);
    auto const isBytes = what.question.sought.kind == FileSearch::Sought::Kind::bytes;
    if (answer.kind == Answer::Kind::tooLong && what.question.farthest > what.question.part.to) {
        what.question.farthest = 0;
        answer = co_await ask(what);
    }
    if (answer.kind == Answer::Kind::tooLong && isBytes) {
        auto const end = what.question.part.to;
        for (auto const piece : FileSearch::piecesOf(what.question)) {
            what.question.part = piece;
            answer = co_await ask(what);
            answer.found.to = end;
            if (answer.kind != Answer::Kind::searched || answer.found.match)
                break;
        }
    }
    FileSearch::throwIfFailed(answer);
    co_return answer;
}

} // namespace

Task<Answer> run(EngineRuntime &engine, std::shared_ptr<CommandHost> host, std::string path, Question question,
                 FileSearch::Progress progress)
{
    return runOn({engine, std::move(host), std::move(path), std::move(question), std::move(progress)});
}

} // namespace tw::HostSearch
