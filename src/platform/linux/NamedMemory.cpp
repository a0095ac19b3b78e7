#include "platform/NamedMemory.h"

#include <sys/mman.h>

#include <cerrno>
#include <map>
#include <memory>

#include "platform/linux/NamedObject.h"

namespace platform {

namespace {

class NamedMemory final : public NamedObject {
 public:
  using NamedObject::NamedObject;
};

using ViewTable = std::map<const std::uint8_t*, std::size_t>;

// Sizes of the views by their addresses; never destroyed, as views live to the end of the process.
ViewTable& Views() {
  static auto& tViews = *new ViewTable;
  return tViews;
}

std::uint32_t OpenBlock(const std::string& sName, std::uint32_t lSize) {
  const std::string sFileName = NamedObject::FileName("memory", sName);
  FileDescriptor tFile = NamedObject::Open(sFileName, lSize);
  if (!tFile.IsOpen()) return 0;
  return AddSystemObject(std::make_unique<NamedMemory>(std::move(tFile), sFileName));
}

}  // namespace

std::uint32_t OpenNamedMemory(const std::string& sName) { return OpenBlock(sName, 0); }

std::uint32_t CreateNamedMemory(const std::string& sName, std::uint32_t lSize) {
  if (lSize == 0) {
    SetLastSystemError(EINVAL);
    return 0;
  }
  return OpenBlock(sName, lSize);
}

std::uint8_t* MapNamedMemory(std::uint32_t hMemory) {
  const auto* const pMemory = SystemObjectAs<NamedMemory>(hMemory);
  if (pMemory == nullptr) return nullptr;
  const std::size_t lSize = pMemory->Size();
  std::uint8_t* const pView = pMemory->Map(lSize);
  if (pView != nullptr) Views()[pView] = lSize;
  return pView;
}

std::uint32_t NamedMemorySize(const std::uint8_t* pView) {
  const auto tFound = Views().find(pView);
  return tFound == Views().end() ? 0 : static_cast<std::uint32_t>(tFound->second);
}

void UnmapNamedMemory(std::uint8_t* pView) {
  const auto tFound = Views().find(pView);
  if (tFound == Views().end()) return;
  ::munmap(pView, tFound->second);
  Views().erase(tFound);
}

}  // namespace platform
