#include "platform/NamedEvent.h"

#include "platform/win32/SystemHandles.h"

namespace platform {

using win32::HandleOf;
using win32::Noted;

std::uint32_t CreateNamedEvent(const std::string& sName) {
  const std::wstring sWide = win32::ObjectName(sName);
  if (sWide.empty()) return 0;
  constexpr BOOL MANUAL_RESET = FALSE;
  constexpr BOOL SIGNALLED = FALSE;
  return win32::NotedNumber(::CreateEventW(nullptr, MANUAL_RESET, SIGNALLED, sWide.c_str()));
}

bool SetNamedEvent(std::uint32_t hEvent) {
  return Noted(::SetEvent(HandleOf<HANDLE>(hEvent)) != 0);
}

bool ResetNamedEvent(std::uint32_t hEvent) {
  return Noted(::ResetEvent(HandleOf<HANDLE>(hEvent)) != 0);
}

bool WaitNamedEvent(std::uint32_t hEvent) {
  return ::WaitForSingleObject(HandleOf<HANDLE>(hEvent), 0) == WAIT_OBJECT_0;
}

}  // namespace platform
