#include "platform/win32/WinFileDialog.h"

#include <cderr.h>

#include <algorithm>
#include <string>
#include <vector>

namespace platform::win32 {

namespace {

const char* Description(DWORD lError) {
  switch (lError) {
    case FNERR_BUFFERTOOSMALL:
      return "Path too long";
    case FNERR_INVALIDFILENAME:
      return "Invalid file name";
    case FNERR_SUBCLASSFAILURE:
    case CDERR_MEMALLOCFAILURE:
    case CDERR_MEMLOCKFAILURE:
      return "Out of memory";
    default:
      return "The file dialog cannot be shown";
  }
}

/// The dialog makes the folder that the user looks into the process's own; this gives that back.
class FolderKeeper {
 public:
  FolderKeeper() : sFolder(::GetCurrentDirectoryW(0, nullptr), L'\0') {
    ::GetCurrentDirectoryW(static_cast<DWORD>(sFolder.size()), sFolder.data());
  }
  FolderKeeper(const FolderKeeper&) = delete;
  FolderKeeper& operator=(const FolderKeeper&) = delete;
  ~FolderKeeper() { ::SetCurrentDirectoryW(sFolder.c_str()); }

 private:
  std::wstring sFolder;
};

}  // namespace

FileDialogResult RunFileDialog(HWND hOwner, const FileDialogRequest& tRequest) {
  // Windows has the parts of a filter end in character 0, and the last one in two.
  std::string sFilter(tRequest.sFilter);
  std::ranges::replace(sFilter, '|', '\0');
  sFilter += '\0';

  std::vector<char> abPath(static_cast<std::size_t>(std::max(tRequest.lMaxFileSize, MAX_PATH)));
  const std::size_t lName = std::min(tRequest.sFileName.size(), abPath.size() - 1);
  std::copy_n(tRequest.sFileName.begin(), lName, abPath.begin());

  const FolderKeeper tKeeper;
  OPENFILENAMEA tDialog = {};
  tDialog.lStructSize = sizeof(tDialog);
  tDialog.hwndOwner = hOwner;
  tDialog.lpstrFilter = sFilter.c_str();
  tDialog.nFilterIndex = static_cast<DWORD>(tRequest.lFilterIndex);
  tDialog.lpstrFile = abPath.data();
  tDialog.nMaxFile = static_cast<DWORD>(abPath.size());
  tDialog.Flags = static_cast<DWORD>(tRequest.lFlags);
  const BOOL bChosen = tRequest.bSave ? ::GetSaveFileNameA(&tDialog) : ::GetOpenFileNameA(&tDialog);
  if (bChosen != FALSE) return {FileDialogResult::Outcome::Chosen, abPath.data(), 0, {}};
  const DWORD lError = ::CommDlgExtendedError();
  if (lError == 0) return {};
  return {FileDialogResult::Outcome::Failed,
          {},
          static_cast<std::int32_t>(lError),
          Description(lError)};
}

}  // namespace platform::win32
