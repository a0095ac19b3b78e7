#include "platform/NamedEvent.h"

#include <sys/mman.h>

#include <atomic>
#include <memory>
#include <utility>

#include "platform/linux/NamedObject.h"

namespace platform {

namespace {

using Signal = std::atomic<std::uint32_t>;
static_assert(Signal::is_always_lock_free, "processes share it");
static_assert(sizeof(Signal) == sizeof(std::uint32_t));

// The block of an event holds one number: 1 signalled, 0 not.
class NamedEvent final : public NamedObject {
 public:
  NamedEvent(FileDescriptor tOpened, std::string sFileNameOpened)
      : NamedObject(std::move(tOpened), std::move(sFileNameOpened)), pView(Map(sizeof(Signal))) {}
  ~NamedEvent() override {
    if (pView != nullptr) ::munmap(pView, sizeof(Signal));
  }

  // Another program may have cut the memory, and touching what is gone would end the process.
  bool IsWhole() const { return pView != nullptr && Size() >= sizeof(Signal); }
  // A page of zeros from the system is an event not signalled, so nothing is constructed here,
  // where other processes may already be at work.
  Signal& Signalled() const { return *reinterpret_cast<Signal*>(pView); }

 private:
  std::uint8_t* pView;
};

const NamedEvent* WholeEvent(std::uint32_t hEvent) {
  const auto* const pEvent = SystemObjectAs<NamedEvent>(hEvent);
  if (pEvent == nullptr || pEvent->IsWhole()) return pEvent;
  SetLastSystemError(EINVAL);
  return nullptr;
}

}  // namespace

std::uint32_t CreateNamedEvent(const std::string& sName) {
  const std::string sFileName = NamedObject::FileName("event", sName);
  FileDescriptor tFile = NamedObject::Open(sFileName, sizeof(Signal));
  if (!tFile.IsOpen()) return 0;
  const std::uint32_t hEvent =
      AddSystemObject(std::make_unique<NamedEvent>(std::move(tFile), sFileName));
  if (WholeEvent(hEvent) != nullptr) return hEvent;
  CloseSystemHandle(hEvent);
  return 0;
}

bool SetNamedEvent(std::uint32_t hEvent) {
  const auto* const pEvent = WholeEvent(hEvent);
  if (pEvent != nullptr) pEvent->Signalled() = 1;
  return pEvent != nullptr;
}

bool ResetNamedEvent(std::uint32_t hEvent) {
  const auto* const pEvent = WholeEvent(hEvent);
  if (pEvent != nullptr) pEvent->Signalled() = 0;
  return pEvent != nullptr;
}

bool WaitNamedEvent(std::uint32_t hEvent) {
  const auto* const pEvent = WholeEvent(hEvent);
  return pEvent != nullptr && pEvent->Signalled().exchange(0) == 1;
}

}  // namespace platform
