#include "platform/SavedFile.h"

#include <limits>

#include "platform/ExclusiveFile.h"
#include "platform/win32/SystemHandles.h"

namespace platform {

namespace {

using win32::Noted;
using win32::OwnedHandle;

/// Writes the contents beside the file and gives the new file the old one's name; false on
/// failure, noted.
bool Replace(const std::string& sPath, std::string_view sContents) {
  const std::string sBase = sPath.substr(0, sPath.find_last_of("\\/:") + 1) + "~varnel-" +
                            std::to_string(::GetCurrentProcessId()) + '-';
  std::string sNew;
  OwnedHandle hNew;
  for (int lTry = 0; hNew == nullptr; ++lTry) {
    sNew = sBase + std::to_string(lTry) + ".tmp";
    hNew = win32::Owned(::CreateFileA(sNew.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                      FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!Noted(hNew != nullptr) && LastSystemError() != ERROR_FILE_EXISTS) return false;
  }
  const bool bWritten =
      win32::WriteText(hNew.get(), sContents) && Noted(::FlushFileBuffers(hNew.get()) != 0);
  hNew.reset();
  // ReplaceFile would keep who may use the file, but can lose the old one half-way; a move is one
  // step of the file system.
  const bool bMoved =
      bWritten && Noted(::MoveFileExA(sNew.c_str(), sPath.c_str(),
                                      MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) != 0);
  if (!bMoved) ::DeleteFileA(sNew.c_str());
  return bMoved;
}

}  // namespace

std::string SaveFileWhole(const std::string& sPath, std::string_view sContents) {
  const DWORD lAttributes = ::GetFileAttributesA(sPath.c_str());
  const bool bOld = lAttributes != INVALID_FILE_ATTRIBUTES;
  if (bOld && (lAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) return "Not a plain file";
  if (sContents.size() > std::numeric_limits<DWORD>::max()) {
    return win32::ErrorText(ERROR_FILE_TOO_LARGE);
  }
  if (Replace(sPath, sContents)) return {};
  if (bOld &&
      (LastSystemError() == ERROR_ACCESS_DENIED || LastSystemError() == ERROR_SHARING_VIOLATION)) {
    // Someone may be reading it.
    const std::uint32_t hFile = win32::NotedNumber(
        ::CreateFileA(sPath.c_str(), GENERIC_READ | GENERIC_WRITE,
                      FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0, nullptr));
    const bool bWritten = hFile != 0 && WriteExclusiveFile(hFile, sContents);
    CloseSystemHandle(hFile);
    if (bWritten) return {};
  }
  return win32::ErrorText(LastSystemError());
}

std::string SaveFileOrWriteStream(const std::string& sPath, std::string_view sContents) {
  const OwnedHandle hStream =
      win32::Owned(::CreateFileA(sPath.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                 nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
  if (hStream == nullptr || ::GetFileType(hStream.get()) == FILE_TYPE_DISK) {
    return SaveFileWhole(sPath, sContents);
  }
  return win32::WriteText(hStream.get(), sContents) ? "" : win32::ErrorText(LastSystemError());
}

}  // namespace platform
