#include "Platform/ParallelWork.h"

#include <pthread.h>
#include <sched.h>

namespace orvia {

void startElsewhere(std::thread& thread)
{
    cpu_set_t allowed;
    const int here = ::sched_getcpu();
    if (here < 0 || ::sched_getaffinity(0, sizeof allowed, &allowed) != 0)
        return;
    cpu_set_t others = allowed;
    CPU_CLR(static_cast<std::size_t>(here), &others);
    if (CPU_COUNT(&others) == 0)
        return;
    ::pthread_setaffinity_np(thread.native_handle(), sizeof others, &others);
    ::pthread_setaffinity_np(thread.native_handle(), sizeof allowed, &allowed);
}

} // namespace orvia
