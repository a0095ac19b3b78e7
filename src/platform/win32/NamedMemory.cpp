#include "platform/NamedMemory.h"

#include <limits>

#include "platform/win32/SystemHandles.h"

namespace platform {

using win32::Noted;
using win32::NotedNumber;
using win32::ObjectName;

namespace {

/// Bytes of a view; 0 for what is none.
SIZE_T ViewSize(const void* pView) {
  MEMORY_BASIC_INFORMATION tRegion = {};
  if (pView == nullptr || ::VirtualQuery(pView, &tRegion, sizeof(tRegion)) == 0 ||
      tRegion.AllocationBase != pView || tRegion.State != MEM_COMMIT ||
      tRegion.Type != MEM_MAPPED) {
    return 0;
  }
  return tRegion.RegionSize;
}

}  // namespace

std::uint32_t OpenNamedMemory(const std::string& sName) {
  const std::wstring sWide = ObjectName(sName);
  if (sWide.empty()) return 0;
  return NotedNumber(::OpenFileMappingW(FILE_MAP_WRITE, FALSE, sWide.c_str()));
}

std::uint32_t CreateNamedMemory(const std::string& sName, std::uint32_t lSize) {
  const std::wstring sWide = ObjectName(sName);
  if (sWide.empty()) return 0;
  return NotedNumber(
      ::CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, lSize, sWide.c_str()));
}

std::uint8_t* MapNamedMemory(std::uint32_t hMemory) {
  void* const pView = ::MapViewOfFile(win32::HandleOf<HANDLE>(hMemory), FILE_MAP_WRITE, 0, 0, 0);
  if (!Noted(pView != nullptr)) return nullptr;
  if (ViewSize(pView) > std::numeric_limits<std::uint32_t>::max()) {
    ::UnmapViewOfFile(pView);
    win32::NoteFailure(ERROR_FILE_TOO_LARGE);
    return nullptr;
  }
  return static_cast<std::uint8_t*>(pView);
}

std::uint32_t NamedMemorySize(const std::uint8_t* pView) {
  return static_cast<std::uint32_t>(ViewSize(pView));
}

void UnmapNamedMemory(std::uint8_t* pView) {
  if (pView != nullptr) ::UnmapViewOfFile(pView);
}

}  // namespace platform
