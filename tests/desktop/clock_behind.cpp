// Preloaded into a program, puts its wall clock back by an hour.

#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

// Under the name that programs call.
extern "C" __attribute__((visibility("default"))) int clockBehind(clockid_t clock,
                                                                  timespec* time) noexcept
    __asm__("clock_gettime");

int clockBehind(clockid_t clock, timespec* time) noexcept {
  const long failed = syscall(SYS_clock_gettime, clock, time);
  if (failed == 0 && clock == CLOCK_REALTIME) time->tv_sec -= 3600;
  return static_cast<int>(failed);
}
