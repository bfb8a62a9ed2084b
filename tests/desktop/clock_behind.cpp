// Preloaded into a program, puts its wall clock back by an hour.

#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

// NOLINTNEXTLINE(readability-inconsistent-declaration-parameter-name): the system's names are its
// own
extern "C" __attribute__((visibility("default"))) int clock_gettime(clockid_t clock,
                                                                    timespec* time) noexcept {
  const long failed = syscall(SYS_clock_gettime, clock, time);
  if (failed == 0 && clock == CLOCK_REALTIME) time->tv_sec -= 3600;
  return static_cast<int>(failed);
}
