#include "Platform/ParallelWork.h"

#include <gtest/gtest.h>

#include <sched.h>

namespace orvia {

namespace {

int allowedProcessors()
{
    cpu_set_t allowed;
    return ::sched_getaffinity(0, sizeof allowed, &allowed) == 0 ? CPU_COUNT(&allowed) : -1;
}

TEST(ParallelWorkTest, AnswersFromAnotherThreadThatMayRunEverywhere)
{
    const ParallelWork thread(std::this_thread::get_id);
    EXPECT_NE(thread.result().get(), std::this_thread::get_id());

    static std::promise<void> begin;
    const ParallelWork processors(+[] {
        begin.get_future().wait();
        return allowedProcessors();
    });
    begin.set_value();
    EXPECT_EQ(processors.result().get(), allowedProcessors());
}

TEST(ParallelWorkTest, EndsWithItsWork)
{
    static bool isDone = false;
    {
        const ParallelWork<void> work([] {
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
            isDone = true;
        });
    }
    EXPECT_TRUE(isDone);
}

} // namespace
} // namespace orvia
