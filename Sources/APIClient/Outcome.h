#pragma once

#include "APIClient/APIError.h"

#include <QCoro/QCoroTask>

#include <optional>
#include <type_traits>
#include <variant>

namespace orvia {

/// The answer of a request; @c std::monostate stands for success where the service says nothing else.
template <class Result>
using AnswerOf = std::conditional_t<std::is_void_v<Result>, std::monostate, Result>;

/// What became of a request: exactly one of the two is there.
template <class Answer>
struct Outcome {
    std::optional<Answer> answer;
    std::optional<APIError> failure;
};

/// Waits for a request of the service client and answers what became of it instead of throwing the error, so
/// that a caller first looks at what else changed meanwhile, and then at the outcome.
template <class Result>
QCoro::Task<Outcome<AnswerOf<Result>>> outcomeOf(QCoro::Task<Result> request)
{
    Outcome<AnswerOf<Result>> outcome;
    try {
        if constexpr (std::is_void_v<Result>) {
            co_await request;
            outcome.answer.emplace();
        } else {
            outcome.answer = co_await request;
        }
    } catch (const APIError& error) {
        outcome.failure = error;
    }
    co_return outcome;
}

} // namespace orvia
