#include "platform/Environment.h"

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <thread>
#include <utility>

#include "platform/linux/FileDescriptor.h"

namespace platform {

namespace {

constexpr mode_t OTHERS_CAN_WRITE = S_IWOTH;
constexpr mode_t GROUP_OR_OTHERS_CAN_WRITE = S_IWGRP | S_IWOTH;

// An environment variable's value; none when it is missing or empty, which is the same to a shell.
std::optional<std::string> EnvironmentVariable(const char* sName) {
  const char* const pValue = std::getenv(sName);
  if (pValue == nullptr || *pValue == '\0') return std::nullopt;
  return pValue;
}

// As above for a folder; the XDG conventions ignore relative ones.
std::optional<std::string> AbsoluteFolder(const char* sName) {
  auto sFolder = EnvironmentVariable(sName);
  return sFolder && sFolder->starts_with('/') ? sFolder : std::nullopt;
}

bool IsOwnFolder(const struct stat& tStatus, mode_t lForbidden) {
  return S_ISDIR(tStatus.st_mode) && tStatus.st_uid == ::geteuid() &&
         (tStatus.st_mode & lForbidden) == 0;
}

// Whether another user can put or change files there.
bool IsOfOthers(const struct stat& tStatus) {
  return (tStatus.st_uid != ::geteuid() && tStatus.st_uid != 0) ||
         (tStatus.st_mode & OTHERS_CAN_WRITE) != 0;
}

// Strictly the user's: no symbolic link, and nobody else can write there.
bool IsPrivateFolder(const std::string& sFolder) {
  struct stat tStatus = {};
  return ::lstat(sFolder.c_str(), &tStatus) == 0 && IsOwnFolder(tStatus, GROUP_OR_OTHERS_CAN_WRITE);
}

std::optional<std::string> HomeFolder() {
  if (auto sHome = AbsoluteFolder("HOME")) return sHome;
  const struct passwd* const pUser = ::getpwuid(::geteuid());
  if (pUser == nullptr || pUser->pw_dir == nullptr) return std::nullopt;
  return pUser->pw_dir;
}

}  // namespace

const char PATH_SEPARATOR = '/';

std::optional<std::string> UserDataFolder() {
  if (auto sFolder = EnvironmentVariable("LOCALAPPDATA")) return sFolder;
  auto sFolder = AbsoluteFolder("XDG_DATA_HOME");
  if (!sFolder) {
    sFolder = HomeFolder();
    if (sFolder) *sFolder += "/.local/share";
  }
  if (!sFolder) return std::nullopt;
  for (auto lEnd = sFolder->find('/', 1); lEnd != std::string::npos;
       lEnd = sFolder->find('/', lEnd + 1)) {
    CreateFolder(sFolder->substr(0, lEnd));
  }
  CreateFolder(*sFolder);
  // A link may lead to it and the user's group may share it, as home folders are often set up.
  struct stat tStatus = {};
  if (::stat(sFolder->c_str(), &tStatus) != 0 || !IsOwnFolder(tStatus, OTHERS_CAN_WRITE)) {
    return std::nullopt;
  }
  return sFolder;
}

std::optional<std::string> UserTempFolder() {
  if (auto sFolder = EnvironmentVariable("TEMP")) return sFolder;
  if (auto sFolder = AbsoluteFolder("XDG_RUNTIME_DIR"); sFolder && IsPrivateFolder(*sFolder)) {
    return sFolder;
  }
  std::string sFolder = AbsoluteFolder("TMPDIR").value_or("/tmp");
  sFolder += "/varnel-" + std::to_string(::geteuid());
  CreateFolder(sFolder);
  if (!IsPrivateFolder(sFolder)) return std::nullopt;
  return sFolder;
}

bool PathExists(const std::string& sPath) {
  struct stat tStatus = {};
  return ::stat(sPath.c_str(), &tStatus) == 0 ||
         (errno != ENOENT && errno != ENOTDIR && errno != ENAMETOOLONG);
}

bool CreateFolder(const std::string& sPath) {
  return ::mkdir(sPath.c_str(), 0700) == 0 || errno == EEXIST;
}

bool SecureFolder(const std::string& sPath) {
  struct stat tStatus = {};
  const std::string sParent = sPath.substr(0, sPath.rfind('/') + 1);
  if (::lstat(sPath.c_str(), &tStatus) == 0 && S_ISLNK(tStatus.st_mode) &&
      (::stat(sParent.c_str(), &tStatus) != 0 || IsOfOthers(tStatus))) {
    return false;
  }
  if (::stat(sPath.c_str(), &tStatus) != 0 || !S_ISDIR(tStatus.st_mode)) return true;
  if (IsOfOthers(tStatus)) return false;
  if (tStatus.st_uid == ::geteuid() && (tStatus.st_mode & (S_IRWXG | S_IRWXO)) != 0) {
    static_cast<void>(::chmod(sPath.c_str(), S_IRWXU));  // where modes are kept
  }
  return true;
}

FileText ReadFileText(const std::string& sPath) {
  // Without O_NONBLOCK, opening a pipe would wait for its writer.
  const FileDescriptor tFile = OpenFile(sPath, O_RDONLY | O_NONBLOCK);
  if (!tFile.IsOpen()) {
    const bool bMissing = errno == ENOENT || errno == ENOTDIR;
    return {bMissing ? FileText::Outcome::Missing : FileText::Outcome::Unreadable, {}};
  }
  const auto tStatus = tFile.Status();
  auto sText = tStatus && tStatus->st_size <= LARGEST_FILE_TEXT ? tFile.ReadAll() : std::nullopt;
  if (!sText) return {FileText::Outcome::Unreadable, {}};
  return {FileText::Outcome::Read, *std::move(sText)};
}

void SleepMilliseconds(std::uint32_t lMilliseconds) {
  std::this_thread::sleep_for(std::chrono::milliseconds(lMilliseconds));
}

}  // namespace platform
