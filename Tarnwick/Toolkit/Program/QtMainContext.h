#pragma once

#include "TWEngine/Runtime/MainContext.h"

#include <QObject>

#include <memory>

namespace tw {

/// The main context on Qt's event loop: one posted event for a batch of work.
///
/// Threads: made and destroyed on the main thread; `context` may be posted to from anywhere.
/// Lifetime: the context may outlive this object; what is posted to it then no longer runs.
class QtMainContext final : public QObject {
    Q_OBJECT

public:
    QtMainContext();
    ~QtMainContext() override;

    std::shared_ptr<MainContext> const &context() const noexcept { return main; }

    bool event(QEvent *event) override;

private:
    /// Where a wake goes to; nowhere when the object is gone.
    struct Target;

    std::shared_ptr<Target> const target;
    std::shared_ptr<MainContext> const main;
};

} // namespace tw
