#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "platform/SystemHandle.h"
#include "platform/win32/WinHeaders.h"

namespace platform::win32 {

/// Windows handles as 32-bit numbers and back. Of a handle of a 64-bit process only the low 32 bits
/// are significant, the others repeat the sign ("Interprocess Communication Between 32-bit and
/// 64-bit Applications" in the Windows documentation).
template <class Handle>
std::uint32_t NumberOf(Handle hObject) {
  return static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(hObject));
}
template <class Handle>
Handle HandleOf(std::uint32_t hNumber) {
  return reinterpret_cast<Handle>(static_cast<std::intptr_t>(static_cast<std::int32_t>(hNumber)));
}

/// Keeps GetLastError's code for LastSystemError when a call has failed; gives bSucceeded back.
bool Noted(bool bSucceeded);

/// A kernel handle's number; 0, with the reason noted, for the two values that mean a failure.
std::uint32_t NotedNumber(HANDLE hObject);

/// Makes a failure of this code the last one.
void NoteFailure(DWORD lError);

/// The name of a mapping or an event as Windows has it. Its bytes are in the system's 8-bit code
/// page, as the suite's other programs write and use them; this program's own is UTF-8, by its
/// manifest. Empty, and the failure noted, for an empty name, which would mean an object without
/// one, for one with a character 0, which would cut it, and for one of more than MAX_PATH
/// characters, which is as far as the documentation of CreateEvent goes.
std::wstring ObjectName(const std::string& sName);

struct HandleCloser {
  void operator()(HANDLE hObject) const { ::CloseHandle(hObject); }
};
/// Owns a kernel handle for the length of a call.
using OwnedHandle = std::unique_ptr<void, HandleCloser>;

/// Takes a handle over; none for the two values that mean a failure.
OwnedHandle Owned(HANDLE hObject);

/// The whole of an open plain file under 4 GB, from its start on; none on failure, noted.
std::optional<std::string> ReadWholeFile(HANDLE hFile);

/// Writes a text in one write at the file's current place; false on failure, noted.
bool WriteText(HANDLE hFile, std::string_view sText);

/// The system's own words for an error code, without line end.
std::string ErrorText(DWORD lError);

}  // namespace platform::win32
