#pragma once

#include <future>
#include <thread>

namespace orvia {

/// Lets a thread that has just been made begin on another processor than its maker's, if there is one it may
/// run on. A kernel may start it behind its maker and spread the two a tick later, which is milliseconds: too
/// late for work that the maker wants done meanwhile. From then on the kernel places it as always.
void startElsewhere(std::thread& thread);

/// Work that runs in a thread of its own, at once and beside what its maker does next. The destructor waits
/// for its end.
template <class Result>
class ParallelWork {
public:
    explicit ParallelWork(Result (*work)())
        : ParallelWork(std::packaged_task<Result()>(work))
    {
    }
    ParallelWork(const ParallelWork&) = delete;
    ParallelWork& operator=(const ParallelWork&) = delete;
    ~ParallelWork() { m_thread.join(); }

    const std::shared_future<Result>& result() const { return m_result; }

private:
    explicit ParallelWork(std::packaged_task<Result()> task)
        : m_result(task.get_future())
        , m_thread(std::move(task))
    {
        startElsewhere(m_thread);
    }

    std::shared_future<Result> m_result;
    std::thread m_thread;
};

} // namespace orvia
