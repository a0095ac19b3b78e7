#include "link/modALLProcessEvents.h"

#include "config/modALLProcessError.h"
#include "platform/NamedEvent.h"

namespace modALLProcess {

namespace {

constexpr std::int32_t ERROR_CREATE_EVENT = -2147221503;  // 80040001H

}  // namespace

std::uint32_t CreateNamedEvent(const std::string& sName) {
  const std::uint32_t hEvent = platform::CreateNamedEvent(sName);
  if (hEvent == 0) throw RuntimeError(ERROR_CREATE_EVENT, "CreateEvent failed");
  return hEvent;
}

void SignalEvent(std::uint32_t hEvent) {
  if (hEvent != 0) platform::SetNamedEvent(hEvent);
}

void CloseHandleAndClear(std::uint32_t& hObject) {
  if (hObject == 0) return;
  platform::CloseSystemHandle(hObject);
  hObject = 0;
}

}  // namespace modALLProcess
