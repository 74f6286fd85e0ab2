#include "Tarnwick/Toolkit/Windows/QuitQuestion.h"

#include "Tarnwick/Toolkit/Dialogs/QuestionSheet.h"
#include "Tarnwick/Toolkit/Dialogs/SheetQueue.h"
#include "Tarnwick/Transfers/JobList.h"

namespace tw {

namespace {

/// Of what is under way, in the question.
constexpr std::size_t mostTitles = 8;

} // namespace

QuitQuestion::QuitQuestion(std::shared_ptr<JobList> underWay, Unsaved unsavedFiles, SheetQueue &over, QWidget &of)
    : jobs(std::move(underWay)), unsaved(std::move(unsavedFiles)), sheets(over), window(of)
{
}

/// Empty: nothing is in the way.
std::string QuitQuestion::whatQuittingMeans() const
{
    std::vector<std::string> titles;
    for (auto const &each : jobs->underWay())
        titles.push_back(each->title);
    std::string message;
    if (!titles.empty())
        message = "This is still under way, and quitting ends it:\n\n" + Dialogs::describe(titles, mostTitles);
    auto const files = unsaved();
    if (files.empty())
        return message;
    return message + (message.empty() ? "" : "\n\n") +
           "What you have saved in these is not on the host yet. It is kept here, and offered again at the next "
           "start:\n\n" +
           Dialogs::describe(files, mostTitles);
}

void QuitQuestion::ask(std::function<void()> quit)
{
    if (!isNeeded())
        return quit();
    if (question)
        return;
    question = new QuestionSheet({.title = "Quit Tarnwick?",
                                  .message = whatQuittingMeans(),
                                  .okTitle = "Quit",
                                  .danger = Dialogs::Danger::destructive},
                                 &window);
    QObject::connect(question, &QDialog::finished, &window, [this, quit = std::move(quit)](int code) {
        sheets.remove(*question);
        if (code != QDialog::Accepted)
            return;
        letClose();
        quit();
    });
    sheets.add(*question, SheetQueue::Kind::urgent);
}

} // namespace tw
