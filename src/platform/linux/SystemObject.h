#pragma once

#include <cerrno>
#include <cstdint>
#include <memory>

#include "platform/SystemHandle.h"

namespace platform {

/// What a handle stands for; its destructor gives it back to the system.
class SystemObject {
 public:
  SystemObject() = default;
  SystemObject(const SystemObject&) = delete;
  SystemObject& operator=(const SystemObject&) = delete;
  virtual ~SystemObject() = default;
};

/// Notes the code that LastSystemError gives; errno values.
void SetLastSystemError(int lError);

/// Takes an object into the process's handle table, which releases what is left in it when the
/// process ends by exit or quick_exit.
/// @return its handle; a number is not used again for another object while the process lives
std::uint32_t AddSystemObject(std::unique_ptr<SystemObject> pObject);

/// The object of a handle, or nullptr.
SystemObject* SystemObjectOf(std::uint32_t hObject);

/// The object of a handle when it is of a kind, else nullptr with the error EBADF.
template <typename Kind>
Kind* SystemObjectAs(std::uint32_t hObject) {
  auto* const pObject = dynamic_cast<Kind*>(SystemObjectOf(hObject));
  if (pObject == nullptr) SetLastSystemError(EBADF);
  return pObject;
}

}  // namespace platform
