#pragma once

#include "APIClient/Outcome.h"
#include "Session/Session.h"

#include <QPointer>

/// How the session and its screens wait for the service.
namespace orvia {

template <class Result>
QCoro::Task<Session::Answer<Result>> Session::answerTo(QCoro::Task<Result> request)
{
    const QPointer<Session> self = this;
    const quint64 signOuts = m_signOuts;
    auto outcome = co_await outcomeOf(std::move(request));
    // What an agent asked for who has signed out meanwhile is not for whoever signs in next.
    if (!self || m_signOuts != signOuts)
        outcome = {};
    if (outcome.failure)
        showBanner(outcome.failure->message);
    co_return std::move(outcome.answer);
}

} // namespace orvia
