#pragma once

#include "APIClient/Outcome.h"
#include "Session/Session.h"

#include <QPointer>

/// How the session waits for the service. For the sources of the session.
namespace orvia {

template <class Result>
QCoro::Task<Session::Answer<Result>> Session::answerTo(QCoro::Task<Result> request)
{
    const QPointer<Session> self = this;
    auto outcome = co_await outcomeOf(std::move(request));
    if (self && outcome.failure)
        showBanner(outcome.failure->message);
    if (!self)
        outcome.answer.reset();
    co_return std::move(outcome.answer);
}

} // namespace orvia
