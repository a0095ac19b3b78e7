#include "platform/win32/SystemHandles.h"

#include <array>
#include <cstdlib>
#include <string_view>

namespace platform {

namespace {

// A line more in a large text must not double it.
constexpr std::size_t ROOM_TO_GROW = 4096;

DWORD lLastError = 0;

}  // namespace

void CloseSystemHandle(std::uint32_t hObject) {
  if (hObject != 0) ::CloseHandle(win32::HandleOf<HANDLE>(hObject));
}

std::uint32_t LastSystemError() { return lLastError; }

namespace win32 {

void NoteFailure(DWORD lError) { lLastError = lError; }

bool Noted(bool bSucceeded) {
  if (!bSucceeded) lLastError = ::GetLastError();
  return bSucceeded;
}

std::uint32_t NotedNumber(HANDLE hObject) {
  return Noted(hObject != nullptr && hObject != INVALID_HANDLE_VALUE) ? NumberOf(hObject) : 0;
}

namespace {

/// The system's 8-bit code page. Of a program with one of its own in its manifest, GetACP gives
/// that one; the system's stands in the registry, and need not be its locale's ("Use UTF-8 code
/// pages in Windows apps" in the Windows documentation).
UINT SystemCodePage() {
  std::array<char, 16> sNumber{};
  DWORD lSize = sNumber.size();
  ::RegGetValueA(HKEY_LOCAL_MACHINE, R"(SYSTEM\CurrentControlSet\Control\Nls\CodePage)", "ACP",
                 RRF_RT_REG_SZ, nullptr, sNumber.data(), &lSize);
  const auto lCodePage = static_cast<UINT>(std::strtoul(sNumber.data(), nullptr, 10));
  return lCodePage != 0 ? lCodePage : UINT{CP_ACP};
}

}  // namespace

std::wstring ObjectName(const std::string& sName) {
  if (sName.empty() || sName.find('\0') != std::string::npos) {
    NoteFailure(ERROR_INVALID_NAME);
    return {};
  }
  const UINT lCodePage = SystemCodePage();
  const auto lLength = static_cast<int>(sName.size());
  std::wstring sWide(sName.size(), L'\0');
  const int lWide =
      ::MultiByteToWideChar(lCodePage, 0, sName.data(), lLength, sWide.data(), lLength);
  if (!Noted(lWide > 0)) return {};
  if (lWide > MAX_PATH) {
    NoteFailure(ERROR_FILENAME_EXCED_RANGE);
    return {};
  }
  sWide.resize(static_cast<std::size_t>(lWide));
  return sWide;
}

OwnedHandle Owned(HANDLE hObject) {
  return OwnedHandle(hObject == INVALID_HANDLE_VALUE ? nullptr : hObject);
}

std::optional<std::string> ReadWholeFile(HANDLE hFile) {
  DWORD lSizeHigh = 0;
  ::SetLastError(NO_ERROR);
  const DWORD lSize = ::GetFileSize(hFile, &lSizeHigh);
  if (!Noted(lSize != INVALID_FILE_SIZE || ::GetLastError() == NO_ERROR)) return std::nullopt;
  if (lSizeHigh != 0) {
    NoteFailure(ERROR_FILE_TOO_LARGE);
    return std::nullopt;
  }
  std::string sText;
  sText.reserve(std::size_t{lSize} + ROOM_TO_GROW);
  sText.resize(lSize);
  DWORD lRead = 0;
  if (!Noted(::SetFilePointer(hFile, 0, nullptr, FILE_BEGIN) != INVALID_SET_FILE_POINTER &&
             ::ReadFile(hFile, sText.data(), lSize, &lRead, nullptr) != 0)) {
    return std::nullopt;
  }
  sText.resize(lRead);
  return sText;
}

bool WriteText(HANDLE hFile, std::string_view sText) {
  if (sText.empty()) return true;
  DWORD lWritten = 0;
  const auto lLength = static_cast<DWORD>(sText.size());
  if (!Noted(::WriteFile(hFile, sText.data(), lLength, &lWritten, nullptr) != 0)) return false;
  if (lWritten != lLength) NoteFailure(ERROR_DISK_FULL);
  return lWritten == lLength;
}

std::string ErrorText(DWORD lError) {
  std::array<char, 512> sText{};
  const DWORD lLength = ::FormatMessageA(
      FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_MAX_WIDTH_MASK,
      nullptr, lError, 0, sText.data(), sText.size(), nullptr);
  std::string sReason(sText.data(), lLength);
  sReason.erase(sReason.find_last_not_of(" .") + 1);
  return sReason.empty() ? "System error " + std::to_string(lError) : sReason;
}

}  // namespace win32
}  // namespace platform
