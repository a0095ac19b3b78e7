#include "platform/linux/ReplacementFile.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string_view>
#include <utility>

namespace platform {

namespace {

constexpr std::string_view PREFIX = ".varnel-";
constexpr std::string_view RANDOM_PART = "XXXXXX";  // mkostemp(3)

// How often a new file that has lost its name is made again; a file system that counts no names
// must not have it made for ever.
constexpr int MOST_TRIES = 3;

std::string FolderOf(const std::string& sPath) { return sPath.substr(0, sPath.rfind('/') + 1); }

}  // namespace

ReplacementFile::ReplacementFile(std::string sPathToReplace) : sPath(std::move(sPathToReplace)) {
  for (int lTry = 0; lTry < MOST_TRIES; ++lTry) {
    if (!sNew.empty()) ::unlink(sNew.c_str());
    sNew = FolderOf(sPath).append(PREFIX).append(RANDOM_PART);
    tFile = FileDescriptor(::mkostemp(sNew.data(), O_CLOEXEC));
    if (!tFile.IsOpen()) {
      sNew.clear();
      return;
    }
    // A file system without locks has none to tell strays by, either.
    tFile.Lock(F_OFD_SETLKW, F_WRLCK, 0, 0);
    if (tFile.HasName()) return;  // not taken for a stray before it was locked
  }
}

ReplacementFile::~ReplacementFile() {
  const int lError = errno;
  if (!sNew.empty()) ::unlink(sNew.c_str());
  errno = lError;
}

bool ReplacementFile::TakeName() {
  if (::rename(sNew.c_str(), sPath.c_str()) != 0) return false;
  sNew.clear();
  return true;
}

void ReplacementFile::RemoveStrays(const std::string& sPath) {
  const std::string sFolder = FolderOf(sPath);
  std::error_code tIgnored;
  for (std::filesystem::directory_iterator tEntry(sFolder, tIgnored), tEnd; tEntry != tEnd;
       tEntry.increment(tIgnored)) {
    const std::string sName = tEntry->path().filename();
    if (!sName.starts_with(PREFIX) || sName.size() != PREFIX.size() + RANDOM_PART.size()) continue;
    const std::string sStray = sFolder + sName;
    const FileDescriptor tStray = OpenFile(sStray, O_RDWR | O_NOFOLLOW | O_NONBLOCK);
    const auto tStatus = tStray.Status();
    if (tStatus && S_ISREG(tStatus->st_mode) && tStatus->st_uid == ::geteuid() &&
        tStray.LockWhole()) {
      ::unlink(sStray.c_str());
    }
  }
}

}  // namespace platform
