#include "AllocationCount.h"

#include <atomic>

namespace {

std::atomic<std::size_t> count;

} // namespace

// The C library's own functions under their second names; the first ones are replaced here for all libraries.
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t number, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);

void* malloc(std::size_t size)
{
    count.fetch_add(1, std::memory_order_relaxed);
    return __libc_malloc(size);
}

void* calloc(std::size_t number, std::size_t size)
{
    count.fetch_add(1, std::memory_order_relaxed);
    return __libc_calloc(number, size);
}

void* realloc(void* block, std::size_t size)
{
    count.fetch_add(1, std::memory_order_relaxed);
    return __libc_realloc(block, size);
}
}

std::size_t orvia::test::allocationCount()
{
    return count.load(std::memory_order_relaxed);
}
