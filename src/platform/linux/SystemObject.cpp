#include "platform/linux/SystemObject.h"

#include <cstdlib>
#include <map>
#include <utility>

namespace platform {

namespace {

int lLastError = 0;

using HandleTable = std::map<std::uint32_t, std::unique_ptr<SystemObject>>;

// Never destroyed, so that a handle can be closed however late in the end of the process.
HandleTable& Handles() {
  static auto& tHandles = *[] {
    const auto fnRelease = [] { Handles().clear(); };
    std::atexit(fnRelease);
    std::at_quick_exit(fnRelease);
    return new HandleTable;
  }();
  return tHandles;
}

}  // namespace

void SetLastSystemError(int lError) { lLastError = lError; }

std::uint32_t LastSystemError() { return static_cast<std::uint32_t>(lLastError); }

std::uint32_t AddSystemObject(std::unique_ptr<SystemObject> pObject) {
  static std::uint32_t hLast = 0;
  Handles().emplace(++hLast, std::move(pObject));
  return hLast;
}

SystemObject* SystemObjectOf(std::uint32_t hObject) {
  const auto tFound = Handles().find(hObject);
  return tFound == Handles().end() ? nullptr : tFound->second.get();
}

void CloseSystemHandle(std::uint32_t hObject) { Handles().erase(hObject); }

}  // namespace platform
