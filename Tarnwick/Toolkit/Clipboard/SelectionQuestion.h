#pragma once

#include <QAbstractNativeEventFilter>
#include <QObject>

#include <chrono>
#include <cstdint>
#include <functional>

struct xcb_connection_t;

namespace tw {

/// Asks the program that owns a selection of the X server to convert it, and does not wait for the answer. What Qt
/// reads itself it waits for, up to five seconds a format, in which the window stands still.
///
/// Threads: main context only.
/// Lifetime: deletes itself after `onAnswer`, which runs once and never from within `ask`.
class SelectionQuestion final : public QObject, public QAbstractNativeEventFilter {
    Q_OBJECT

public:
    enum class Answer {
        given,
        silence, ///< none within the limit
        nobody,  ///< nobody owns the selection, or there is no X server
    };

    static void ask(char const *selection, char const *target, std::chrono::milliseconds limit,
                    std::function<void(Answer)> onAnswer);

    ~SelectionQuestion() override;

    SelectionQuestion(SelectionQuestion const &) = delete;
    SelectionQuestion &operator=(SelectionQuestion const &) = delete;

    bool nativeEventFilter(QByteArray const &type, void *message, qintptr *result) override;

private:
    explicit SelectionQuestion(std::function<void(Answer)> onAnswer);

    bool send(char const *selection, char const *target);
    void end(Answer answer);

    std::function<void(Answer)> onEnd;
    xcb_connection_t *server = nullptr; ///< Qt's own; null: there is none
    std::uint32_t window = 0;           ///< what the answer is for
};

} // namespace tw
