// Test hooks of the platform layer. They exist only in the test build of the
// platform (the qel_testing library, compiled with QEL_TEST_HOOKS); the
// installed libraries have none of them.
#ifndef QEL_PLATFORM_TESTING_H
#define QEL_PLATFORM_TESTING_H

namespace framework::testing {

/// Fault injection in framework::Memory::StaticAlloc: the next \p n
/// allocations succeed and the one after them fails (n = 0: the very next
/// one); only that one, or every one from then on when \p persistent. A
/// negative \p n turns injection off. Acts on the whole process.
void setFailAfter(long n, bool persistent = false);

} // namespace framework::testing

#endif
