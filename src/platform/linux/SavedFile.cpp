#include "platform/SavedFile.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "platform/linux/FileDescriptor.h"
#include "platform/linux/ReplacementFile.h"

namespace platform {

namespace {

mode_t ModeOfNewFiles() {
  const mode_t lMask = ::umask(0);
  ::umask(lMask);
  return 0666U & ~lMask;
}

// Writes the contents beside the target and gives the new file the target's name, and what says who
// may use the old one, if there is one.
bool Replace(const std::string& sTarget, const struct stat* tOld, std::string_view sContents) {
  ReplacementFile::RemoveStrays(sTarget);
  ReplacementFile tNew(sTarget);
  const FileDescriptor& tFile = tNew.File();
  if (!tFile.IsOpen() || (tOld != nullptr && !tFile.TakeOwner(*tOld))) return false;
  // Not every file system keeps modes.
  static_cast<void>(
      ::fchmod(tFile.Get(), tOld != nullptr ? tOld->st_mode & 0777U : ModeOfNewFiles()));
  return tFile.WriteAll(sContents) && ::fsync(tFile.Get()) == 0 && tNew.TakeName();
}

}  // namespace

std::string SaveFileWhole(const std::string& sPath, std::string_view sContents) {
  const auto sTarget = TargetPath(sPath);
  if (!sTarget) return std::strerror(errno);
  struct stat tOld = {};
  const bool bOld = ::lstat(sTarget->c_str(), &tOld) == 0;
  if (!bOld && errno != ENOENT) return std::strerror(errno);
  if (bOld && !S_ISREG(tOld.st_mode)) return "Not a plain file";
  if (bOld && ::access(sTarget->c_str(), W_OK) != 0) return std::strerror(errno);
  if (Replace(*sTarget, bOld ? &tOld : nullptr, sContents)) return {};
  if (bOld && MayBeWrittenInPlace()) {
    // Making room reads the file where its file system has no call for that.
    const bool bReadable = ::access(sTarget->c_str(), R_OK) == 0;
    const FileDescriptor tFile = OpenFile(*sTarget, bReadable ? O_RDWR : O_WRONLY);
    if (tFile.IsOpen() && tFile.WriteInPlace(sContents)) return {};
  }
  return std::strerror(errno);
}

std::string SaveFileOrWriteStream(const std::string& sPath, std::string_view sContents) {
  const auto sTarget = TargetPath(sPath);
  struct stat tStatus = {};
  if (!sTarget || ::stat(sTarget->c_str(), &tStatus) != 0 || S_ISREG(tStatus.st_mode)) {
    return SaveFileWhole(sPath, sContents);
  }
  const FileDescriptor tStream = OpenFile(*sTarget, O_WRONLY);
  return tStream.IsOpen() && tStream.WriteAll(sContents) ? "" : std::strerror(errno);
}

}  // namespace platform
