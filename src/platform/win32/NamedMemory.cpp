#include "platform/NamedMemory.h"

#include "platform/win32/SystemHandles.h"

namespace platform {

using win32::IsObjectName;
using win32::Noted;
using win32::NotedNumber;

std::uint32_t OpenNamedMemory(const std::string& sName) {
  if (!IsObjectName(sName)) return 0;
  return NotedNumber(::OpenFileMappingA(FILE_MAP_WRITE, FALSE, sName.c_str()));
}

std::uint32_t CreateNamedMemory(const std::string& sName, std::uint32_t lSize) {
  if (!IsObjectName(sName)) return 0;
  return NotedNumber(
      ::CreateFileMappingA(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, lSize, sName.c_str()));
}

std::uint8_t* MapNamedMemory(std::uint32_t hMemory) {
  void* const pView = ::MapViewOfFile(win32::HandleOf<HANDLE>(hMemory), FILE_MAP_WRITE, 0, 0, 0);
  Noted(pView != nullptr);
  return static_cast<std::uint8_t*>(pView);
}

std::uint32_t NamedMemorySize(const std::uint8_t* pView) {
  MEMORY_BASIC_INFORMATION tRegion = {};
  if (pView == nullptr || ::VirtualQuery(pView, &tRegion, sizeof(tRegion)) == 0 ||
      tRegion.AllocationBase != pView || tRegion.State != MEM_COMMIT ||
      tRegion.Type != MEM_MAPPED) {
    return 0;
  }
  return static_cast<std::uint32_t>(tRegion.RegionSize);
}

void UnmapNamedMemory(std::uint8_t* pView) {
  if (pView != nullptr) ::UnmapViewOfFile(pView);
}

}  // namespace platform
