#include "platform/linux/EndSignals.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <ctime>

namespace platform {

namespace {

constexpr std::int64_t MILLISECONDS_OF_ONE_WISH = 250;

// What a handler may touch: it interrupts any thread anywhere.
std::atomic<int> hFirstSignal = -1;
std::atomic<std::int64_t> lFirstSignalTime = 0;  // 0: none has come
static_assert(std::atomic<int>::is_always_lock_free);
static_assert(std::atomic<std::int64_t>::is_always_lock_free);

std::int64_t MillisecondsNow() {
  struct timespec tNow = {};
  ::clock_gettime(CLOCK_MONOTONIC, &tNow);
  return std::int64_t{tNow.tv_sec} * 1000 + tNow.tv_nsec / 1'000'000;
}

void NoteSignal(int lSignal) {
  const int lError = errno;
  const std::int64_t lNow = MillisecondsNow();
  std::int64_t lFirst = 0;
  if (lFirstSignalTime.compare_exchange_strong(lFirst, lNow)) {
    const std::uint64_t lCount = 1;
    static_cast<void>(::write(hFirstSignal, &lCount, sizeof(lCount)));  // there is room for it
  } else if (lNow - lFirst >= MILLISECONDS_OF_ONE_WISH) {
    ::signal(lSignal, SIG_DFL);
    ::raise(lSignal);  // takes effect when this handler returns
  }
  errno = lError;
}

void Handle(int lSignal, void (*fnHandler)(int), int lFlags) {
  struct sigaction tAction = {};
  tAction.sa_handler = fnHandler;
  tAction.sa_flags = lFlags;
  ::sigaction(lSignal, &tAction, nullptr);
}

}  // namespace

void HandleEndSignals(void (*fnHandler)(int), int lFlags) {
  // A script's background job starts with SIGINT ignored, and would go on for ever.
  Handle(SIGINT, fnHandler, lFlags);
  Handle(SIGTERM, fnHandler, lFlags);
  struct sigaction tOld = {};
  if (::sigaction(SIGHUP, nullptr, &tOld) == 0 && tOld.sa_handler != SIG_IGN) {
    Handle(SIGHUP, fnHandler, lFlags);
  }
}

int CatchFirstEndSignal() {
  if (hFirstSignal == -1) {
    hFirstSignal = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    if (hFirstSignal != -1) HandleEndSignals(NoteSignal, SA_RESTART);
  }
  return hFirstSignal;
}

}  // namespace platform
