#pragma once

#include "Tarnwick/Operations/Dialogs.h"
#include "Tarnwick/Toolkit/Dialogs/SheetQueue.h"

namespace tw {

/// Dialogs as sheets over a window.
class SheetDialogs final : public Dialogs {
public:
    explicit SheetDialogs(QWidget &window) : queue(std::make_shared<SheetQueue>(window)) {}

    Task<void> error(Text message) override;
    Task<std::optional<std::string>> prompt(Prompt question) override;
    Task<Answer> confirm(Confirmation question) override;
    std::unique_ptr<Progress> progress(std::string title, std::function<void()> onCancel) override;

    SheetQueue &sheets() const { return *queue; }

private:
    std::shared_ptr<SheetQueue> const queue;
};

} // namespace tw
