#include "Tarnwick/Operations/ProgramQuestion.h"

#include "TWCore/Model/DisplayText.h"

namespace tw::ProgramQuestion {

namespace {

std::string whatItIs(FileNature::Kind kind)
{
    switch (kind) {
    case FileNature::Kind::launcher:
        return "This is a launcher, which starts a program.";
    case FileNature::Kind::script:
        return "This is a script, which is a program.";
    default:
        return "This is a program.";
    }
}

std::string whyItIsNotRun(FileNature const &nature, Origin const &origin)
{
    if (!origin.host.empty())
        return "It comes from " + onOneLine(origin.host) + ", so it is not run from here.";
    if (nature.isMarkedAsFetched)
        return "It was downloaded, so it is not run from here.";
    return nature.mayBeExecuted ? "" : "It may not be executed, so it is not run from here.";
}

} // namespace

std::optional<Question> before(FileNature const &nature, std::string const &name, Origin const &origin)
{
    if (nature.kind == FileNature::Kind::document)
        return std::nullopt;
    auto const objection = whyItIsNotRun(nature, origin);
    Question question{.choice = {.title = "Open " + onOneLine(name) + "?",
                                 .message = whatItIs(nature.kind) + (objection.empty() ? "" : "\n" + objection),
                                 .ways = {"View", "Open With…"}},
                      .ways = {Way::view, Way::openWith}};
    if (objection.empty()) {
        question.choice.ways.emplace_back("Run");
        question.ways.push_back(Way::run);
    }
    return question;
}

} // namespace tw::ProgramQuestion
