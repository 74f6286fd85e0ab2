#pragma once

#include "TWEngine/Passwords/LoginPrompter.h"
#include "Tarnwick/Operations/Dialogs.h"
#include "Tarnwick/Toolkit/Dialogs/JobSheets.h"
#include "Tarnwick/Toolkit/Dialogs/SheetQueue.h"

namespace tw {

/// Dialogs, and the questions of logins, as sheets over a window. Work under way is in a list that other views show
/// too.
class SheetDialogs final : public Dialogs, public LoginPrompter {
public:
    SheetDialogs(QWidget &window, std::shared_ptr<JobList> list)
        : queue(std::make_shared<SheetQueue>(window)), works(std::move(list)), jobSheets(queue, works)
    {
    }

    Task<void> error(Text message, std::string words = {}) override;
    Task<void> details(Text title, std::string words) override;
    Task<std::optional<std::string>> prompt(Prompt question) override;
    Task<std::optional<PackTarget>> packPrompt(PackPrompt question) override;
    Task<Answer> confirm(Confirmation question) override;
    Task<std::optional<std::size_t>> choose(Choice question) override;
    Task<std::optional<std::string>> chooseApplication(ApplicationChoice question) override;
    Task<Resolution> resolve(Conflicts question) override;
    std::unique_ptr<Progress> progress(std::string title, std::function<void()> onCancel) override;

    Task<std::optional<LoginAnswer>> ask(LoginQuestion question) override;

    SheetQueue &sheets() const { return *queue; }

private:
    std::shared_ptr<SheetQueue> const queue;
    std::shared_ptr<JobList> const works;
    JobSheets jobSheets;
};

} // namespace tw
