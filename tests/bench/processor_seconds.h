#ifndef TESTS_BENCH_PROCESSOR_SECONDS_H_
#define TESTS_BENCH_PROCESSOR_SECONDS_H_

#include <time.h>

// Processor time of a piece of work: on a busy machine the clock on the wall would tell about the others.
template <typename Work>
double ProcessorSeconds(Work work) {
  const auto now = [] {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
  };
  const double start = now();
  work();
  return now() - start;
}

#endif  // TESTS_BENCH_PROCESSOR_SECONDS_H_
