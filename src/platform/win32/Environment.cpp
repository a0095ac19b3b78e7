#include "platform/Environment.h"

#include "platform/win32/SystemHandles.h"

namespace platform {

namespace {

/// An environment variable's value. A missing one gives an empty text: the suite's folder then
/// lies at the root of the current drive, where all programs of the suite look for it.
std::string EnvironmentVariable(const char* sName) {
  std::string sValue;
  for (DWORD lNeeded = ::GetEnvironmentVariableA(sName, nullptr, 0); lNeeded > sValue.size();) {
    sValue.resize(lNeeded);
    lNeeded = ::GetEnvironmentVariableA(sName, sValue.data(), lNeeded);
    if (lNeeded < sValue.size()) sValue.resize(lNeeded);
  }
  return sValue;
}

}  // namespace

const char PATH_SEPARATOR = '\\';

std::optional<std::string> UserDataFolder() { return EnvironmentVariable("LOCALAPPDATA"); }

std::optional<std::string> UserTempFolder() { return EnvironmentVariable("TEMP"); }

bool PathExists(const std::string& sPath) {
  return ::GetFileAttributesA(sPath.c_str()) != INVALID_FILE_ATTRIBUTES;
}

// A new folder takes over who may use it from its parent, the user's own.
bool CreateFolder(const std::string& sPath) {
  return ::CreateDirectoryA(sPath.c_str(), nullptr) != 0 || PathExists(sPath);
}

bool IsFolderOfOthers(const std::string& /*sPath*/) { return false; }

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
