// Counts every operator new of a benchmark program (linked into each one).
#include "support/bench_support.h"

void *operator new(std::size_t size) {
  qelbench::newCalls().fetch_add(1, std::memory_order_relaxed);
  if (void *p = std::malloc(size ? size : 1))
    return p;
  throw std::bad_alloc();
}

void operator delete(void *p) noexcept { std::free(p); }
void operator delete(void *p, std::size_t) noexcept { std::free(p); }
