#pragma once

#include <QPointer>

#include <functional>
#include <memory>
#include <string>
#include <vector>

class QWidget;

namespace tw {

class JobList;
class Sheet;
class SheetQueue;

/// Asks before the window closes if that would end work under way, or if something was saved that is not on its host
/// yet.
///
/// Lifetime: `sheets` and `window` outlive it.
class QuitQuestion {
public:
    /// The names of files whose last save is not on their host yet.
    using Unsaved = std::function<std::vector<std::string>()>;

    QuitQuestion(std::shared_ptr<JobList> jobs, Unsaved unsaved, SheetQueue &sheets, QWidget &window);

    /// False: nothing is in the way, or the user has agreed.
    bool isNeeded() const { return !isAnswered && !whatQuittingMeans().empty(); }

    /// Goes on with `quit` at once, or once the user agrees. Asked again meanwhile, it changes nothing.
    void ask(std::function<void()> quit);

    /// From now on the window closes without a question.
    void letClose() { isAnswered = true; }

private:
    std::string whatQuittingMeans() const;

    std::shared_ptr<JobList> const jobs;
    Unsaved const unsaved;
    SheetQueue &sheets;
    QWidget &window;
    QPointer<Sheet> question; ///< while it is asked
    bool isAnswered = false;
};

} // namespace tw
