#pragma once

#include <cstddef>

namespace orvia::test {

/// How often this process asked the allocator for memory so far, libraries and all threads included.
std::size_t allocationCount();

} // namespace orvia::test
