#include "platform/SavedFile.h"

#include <limits>

#include "platform/win32/SystemHandles.h"

namespace platform {

namespace {

using win32::OwnedHandle;

/// Creates a file beside another one under a name of its own, which sNew receives.
OwnedHandle CreateSibling(const std::string& sPath, std::string& sNew) {
  const std::string sBase = sPath + '.' + std::to_string(::GetCurrentProcessId()) + '.';
  OwnedHandle hFile;
  for (int iTry = 0; hFile == nullptr; ++iTry) {
    sNew = sBase + std::to_string(iTry) + ".tmp";
    hFile = win32::Owned(::CreateFileA(sNew.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                       FILE_ATTRIBUTE_NORMAL, nullptr));
    if (hFile == nullptr && ::GetLastError() != ERROR_FILE_EXISTS) break;
  }
  return hFile;
}

}  // namespace

std::string SaveFileWhole(const std::string& sPath, std::string_view sContents) {
  const DWORD lAttributes = ::GetFileAttributesA(sPath.c_str());
  if (lAttributes != INVALID_FILE_ATTRIBUTES && (lAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
    return "Not a plain file";
  }
  if (sContents.size() > std::numeric_limits<DWORD>::max()) {
    return win32::ErrorText(ERROR_FILE_TOO_LARGE);
  }
  std::string sNew;
  OwnedHandle hNew = CreateSibling(sPath, sNew);
  if (hNew == nullptr) return win32::ErrorText(::GetLastError());
  // Beside a device's name, such as "NUL", lies the same device again.
  if (::GetFileType(hNew.get()) != FILE_TYPE_DISK) return "Not a plain file";
  const bool bWritten =
      win32::WriteText(hNew.get(), sContents) && win32::Noted(::FlushFileBuffers(hNew.get()) != 0);
  hNew.reset();
  // ReplaceFile would keep who may use the file, but can lose the old one half-way; a move is one
  // step of the file system.
  if (bWritten &&
      win32::Noted(::MoveFileExA(sNew.c_str(), sPath.c_str(),
                                 MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) != 0)) {
    return {};
  }
  ::DeleteFileA(sNew.c_str());
  return win32::ErrorText(LastSystemError());
}

}  // namespace platform
