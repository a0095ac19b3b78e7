#include "platform/Environment.h"

#include "platform/win32/SystemHandles.h"

namespace platform {

namespace {

/// An environment variable's value. A missing one gives an empty text: the suite's folder then
/// lies at the root of the current drive, where all programs of the suite look for it.
std::string EnvironmentVariable(const wchar_t* sName) {
  std::wstring sWide;
  for (DWORD lNeeded = ::GetEnvironmentVariableW(sName, nullptr, 0); lNeeded > sWide.size();) {
    sWide.resize(lNeeded);
    lNeeded = ::GetEnvironmentVariableW(sName, sWide.data(), lNeeded);
    if (lNeeded < sWide.size()) sWide.resize(lNeeded);
  }
  // In the program's code page by a call of its own: Wine 8 cuts what GetEnvironmentVariableA gives
  // where that is UTF-8.
  const auto lLength = static_cast<int>(sWide.size());
  const auto fnConvert = [&](char* pTo, int lRoom) {
    return ::WideCharToMultiByte(CP_ACP, 0, sWide.data(), lLength, pTo, lRoom, nullptr, nullptr);
  };
  std::string sValue(static_cast<std::size_t>(fnConvert(nullptr, 0)), '\0');
  fnConvert(sValue.data(), static_cast<int>(sValue.size()));
  return sValue;
}

}  // namespace

const char PATH_SEPARATOR = '\\';

std::optional<std::string> UserDataFolder() { return EnvironmentVariable(L"LOCALAPPDATA"); }

std::optional<std::string> UserTempFolder() { return EnvironmentVariable(L"TEMP"); }

bool PathExists(const std::string& sPath) {
  if (::GetFileAttributesA(sPath.c_str()) != INVALID_FILE_ATTRIBUTES) return true;
  const DWORD lError = ::GetLastError();
  return lError != ERROR_FILE_NOT_FOUND && lError != ERROR_PATH_NOT_FOUND &&
         lError != ERROR_INVALID_NAME;
}

// A new folder takes over who may use it from its parent, the user's own.
bool CreateFolder(const std::string& sPath) {
  return ::CreateDirectoryA(sPath.c_str(), nullptr) != 0 || PathExists(sPath);
}

bool SecureFolder(const std::string& /*sPath*/) { return true; }

FileText ReadFileText(const std::string& sPath) {
  const win32::OwnedHandle hFile = win32::Owned(::CreateFileA(
      sPath.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
      OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
  if (hFile == nullptr) {
    const DWORD lError = ::GetLastError();
    const bool bMissing = lError == ERROR_FILE_NOT_FOUND || lError == ERROR_PATH_NOT_FOUND;
    return {bMissing ? FileText::Outcome::Missing : FileText::Outcome::Unreadable, {}};
  }
  // Names such as "CON" lead to a device.
  LARGE_INTEGER tSize = {};
  if (::GetFileType(hFile.get()) != FILE_TYPE_DISK || ::GetFileSizeEx(hFile.get(), &tSize) == 0 ||
      tSize.QuadPart > LARGEST_FILE_TEXT) {
    return {};
  }
  auto sText = win32::ReadWholeFile(hFile.get());
  if (!sText) return {};
  return {FileText::Outcome::Read, *std::move(sText)};
}

void SleepMilliseconds(std::uint32_t lMilliseconds) { ::Sleep(lMilliseconds); }

}  // namespace platform
