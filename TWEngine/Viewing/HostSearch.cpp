#include "TWEngine/Viewing/HostSearch.h"

#include "TWCore/Shell/EndableCommand.h"
#include "TWEngine/Platform/RandomDigits.h"
#include "TWEngine/Transfer/HostWork.h"

namespace tw::HostSearch {

namespace {

using FileSearch::Answer;
using FileSearch::Question;

/// A step is chosen by how fast the one before was, and the file may have been in memory so far.
constexpr std::chrono::minutes limit(5);

struct Search {
    EngineRuntime &engine;
    std::shared_ptr<CommandHost> host;
    std::string path;
    Question question;
};

Task<Answer> ask(Search what)
{
    constexpr int tokenDigits = 16;
    auto const dialect = co_await what.host->dialect();
    auto const script = FileSearch::text(dialect, what.path, what.question);
    if (!script)
        co_return Answer();
    auto const token = randomDigits(tokenDigits);
    auto text = EndableCommand::text(token, "grep", *script);
    auto const result =
        co_await HostWork::run(what.engine, what.host, token, std::move(text), CommandEffect::none, limit);
    co_return FileSearch::answer(result.output, what.question);
}

Task<Answer> runOn(Search what)
{
    auto answer = co_await ask(what);
    auto const isBytes = what.question.sought.kind == FileSearch::Sought::Kind::bytes;
    if (answer.kind == Answer::Kind::tooLong && isBytes) {
        for (auto const piece : FileSearch::piecesOf(what.question)) {
            what.question.part = piece;
            answer = co_await ask(what);
            if (answer.kind != Answer::Kind::searched || answer.match)
                break;
        }
    }
    FileSearch::throwIfFailed(answer);
    co_return answer;
}

} // namespace

Task<Answer> run(EngineRuntime &engine, std::shared_ptr<CommandHost> host, std::string path, Question question)
{
    return runOn({engine, std::move(host), std::move(path), std::move(question)});
}

} // namespace tw::HostSearch
