#include "platform/ExclusiveFile.h"

#include <limits>

#include "platform/win32/SystemHandles.h"

namespace platform {

using win32::HandleOf;
using win32::Noted;

namespace {

/// Why a file could not be opened for reading and writing, as the last failure has it.
std::string ReasonNotOpened(const std::string& sPath) {
  const DWORD lAttributes = ::GetFileAttributesA(sPath.c_str());
  const bool bReadOnly = lAttributes != INVALID_FILE_ATTRIBUTES &&
                         (lAttributes & FILE_ATTRIBUTE_READONLY) != 0 &&
                         (lAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
  return bReadOnly ? "It is read-only" : win32::ErrorText(LastSystemError());
}

}  // namespace

std::uint32_t OpenExclusiveFile(const std::string& sPath, std::string* psReason) {
  constexpr DWORD SHARED_WITH_NOBODY = 0;
  const std::uint32_t hFile = win32::NotedNumber(
      ::CreateFileA(sPath.c_str(), GENERIC_READ | GENERIC_WRITE, SHARED_WITH_NOBODY, nullptr,
                    OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
  if (psReason != nullptr) {
    const bool bHeld = hFile != 0 || LastSystemError() == ERROR_SHARING_VIOLATION;
    *psReason = bHeld ? "" : ReasonNotOpened(sPath);
  }
  return hFile;
}

std::optional<std::string> ReadExclusiveFile(std::uint32_t hFile) {
  return win32::ReadWholeFile(HandleOf<HANDLE>(hFile));
}

bool WriteExclusiveFile(std::uint32_t hNumber, std::string_view sText) {
  const auto hFile = HandleOf<HANDLE>(hNumber);
  const auto fnSetSize = [hFile](LONG lSize) {
    return Noted(::SetFilePointer(hFile, lSize, nullptr, FILE_BEGIN) != INVALID_SET_FILE_POINTER &&
                 ::SetEndOfFile(hFile) != 0);
  };
  if (sText.size() > static_cast<std::size_t>(std::numeric_limits<LONG>::max())) {
    win32::NoteFailure(ERROR_FILE_TOO_LARGE);
    return false;
  }
  const auto lSize = static_cast<LONG>(sText.size());
  // Making room first lets a full disk show before a byte of the old text is overwritten.
  const DWORD lOldSize = ::GetFileSize(hFile, nullptr);
  if (!Noted(lOldSize != INVALID_FILE_SIZE)) return false;
  if (sText.size() > lOldSize && !fnSetSize(lSize)) {
    fnSetSize(static_cast<LONG>(lOldSize));
    return false;
  }
  if (!Noted(::SetFilePointer(hFile, 0, nullptr, FILE_BEGIN) != INVALID_SET_FILE_POINTER)) {
    return false;
  }
  return win32::WriteText(hFile, sText) && fnSetSize(lSize);
}

}  // namespace platform
