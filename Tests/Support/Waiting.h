#pragma once

#include "APIClient/APIError.h"
#include "Support/Printing.h"

#include <QCoro/QCoroTask>

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <variant>

namespace orvia::test {

/// Far more than anything waited for takes, so that only a fault reaches it.
inline constexpr std::chrono::milliseconds generousBound = std::chrono::seconds(30);

/// Runs the event loop until @p predicate holds; false when @p bound passes first.
[[nodiscard]] bool waitUntil(const std::function<bool()>& predicate,
                             std::chrono::milliseconds bound = generousBound);

/// Runs the event loop for @p duration, for a test that looks for what must not happen.
void spinFor(std::chrono::milliseconds duration);

/// How a task ended. A task of void leaves the value std::monostate.
template <class T>
struct Outcome {
    using Value = std::conditional_t<std::is_void_v<T>, std::monostate, T>;

    std::optional<Value> value;
    std::optional<APIError> error;

    bool finished() const { return value || error; }
    /// The error's text; empty for a success.
    QString errorMessage() const { return error ? error->message : QString(); }
};

template <class T>
QCoro::Task<void> recordOutcome(QCoro::Task<T> task, std::shared_ptr<Outcome<T>> outcome)
{
    try {
        if constexpr (std::is_void_v<T>) {
            co_await task;
            outcome->value.emplace();
        } else {
            outcome->value = co_await task;
        }
    } catch (const APIError& error) {
        outcome->error = error;
    }
}

/// Lets @p task run on and answers where its end will show.
template <class T>
std::shared_ptr<Outcome<T>> startTask(QCoro::Task<T> task)
{
    auto outcome = std::make_shared<Outcome<T>>();
    recordOutcome(std::move(task), outcome);
    return outcome;
}

/// Runs the event loop until @p task ends; a task that does not end fails the test.
template <class T>
Outcome<T> runTask(QCoro::Task<T> task)
{
    const auto outcome = startTask(std::move(task));
    EXPECT_TRUE(waitUntil([&] { return outcome->finished(); })) << "the task did not end";
    return *outcome;
}

} // namespace orvia::test
