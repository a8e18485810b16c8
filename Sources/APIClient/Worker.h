#pragma once

#include <QCoro/QCoroFuture>
#include <QtConcurrentRun>

#include <memory>
#include <type_traits>

namespace orvia {

/// Runs @p work on a thread of the global pool and answers what it returned. The result is moved all the way:
/// a page of records is never copied. @p work must not throw, and shares nothing with its caller that
/// changes.
template <class Work>
QCoro::Task<std::invoke_result_t<Work&>> onWorker(Work work)
{
    using Result = std::invoke_result_t<Work&>;
    // Behind a pointer, because the awaited future answers a copy of what it holds. Both are named before
    // they are awaited: GCC 12 destroys a closure made within the awaited expression twice.
    auto run = [work = std::move(work)]() mutable { return std::make_shared<Result>(work()); };
    const QFuture<std::shared_ptr<Result>> running = QtConcurrent::run(std::move(run));
    const std::shared_ptr<Result> result = co_await running;
    co_return std::move(*result);
}

} // namespace orvia
