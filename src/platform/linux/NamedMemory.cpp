#include "platform/NamedMemory.h"

#include <sys/mman.h>

#include <cerrno>
#include <limits>
#include <map>
#include <memory>
#include <utility>

#include "platform/linux/NamedObject.h"

namespace platform {

namespace {

class NamedMemory final : public NamedObject {
 public:
  using NamedObject::NamedObject;
};

struct View {
  std::size_t lSize;
  FileDescriptor tFile;  // of the block, whose own handle may be closed before the view
};

using ViewTable = std::map<const std::uint8_t*, View>;

// The views by their addresses; never destroyed, as views live to the end of the process.
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
  if (lSize > std::numeric_limits<std::uint32_t>::max()) {
    SetLastSystemError(EFBIG);
    return nullptr;
  }
  FileDescriptor tFile = pMemory->Duplicate();
  if (!tFile.IsOpen()) {
    SetLastSystemError(errno);
    return nullptr;
  }
  std::uint8_t* const pView = pMemory->Map(lSize);
  if (pView != nullptr) Views().insert_or_assign(pView, View{lSize, std::move(tFile)});
  return pView;
}

std::uint32_t NamedMemorySize(const std::uint8_t* pView) {
  const auto itFound = Views().find(pView);
  if (itFound == Views().end()) return 0;
  const auto& [lSize, tFile] = itFound->second;
  const auto tStatus = tFile.Status();
  const bool bWhole = tStatus && tStatus->st_size >= static_cast<off_t>(lSize);
  return bWhole ? static_cast<std::uint32_t>(lSize) : 0;
}

void UnmapNamedMemory(std::uint8_t* pView) {
  const auto itFound = Views().find(pView);
  if (itFound == Views().end()) return;
  ::munmap(pView, itFound->second.lSize);
  Views().erase(itFound);
}

}  // namespace platform
