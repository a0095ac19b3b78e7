#include "platform/SavedFile.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "platform/linux/FileDescriptor.h"

namespace platform {

namespace {

// The file that a name stands for, through symbolic links where there are any.
std::string Target(const std::string& sPath) {
  const std::unique_ptr<char, decltype(&std::free)> pTarget(::realpath(sPath.c_str(), nullptr),
                                                            &std::free);
  return pTarget != nullptr ? pTarget.get() : sPath;
}

// The mode that a file at a path has, or that a new one gets.
mode_t ModeFor(const std::string& sPath) {
  struct stat tOld = {};
  if (::stat(sPath.c_str(), &tOld) == 0) {
    return tOld.st_mode & 0777U;
  }
  const mode_t lMask = ::umask(0);
  ::umask(lMask);
  return 0666U & ~lMask;
}

}  // namespace

std::string SaveFileWhole(const std::string& sPath, std::string_view sContents) {
  const std::string sTarget = Target(sPath);
  struct stat tOld = {};
  if (::stat(sTarget.c_str(), &tOld) == 0) {
    if (!S_ISREG(tOld.st_mode)) {
      return "Not a plain file";
    }
    if (::access(sTarget.c_str(), W_OK) != 0) {
      return std::strerror(errno);
    }
  }
  std::string sNew = sTarget + ".XXXXXX";
  const FileDescriptor tNew(::mkostemp(sNew.data(), O_CLOEXEC));
  if (!tNew.IsOpen()) {
    return std::strerror(errno);
  }
  if (tNew.WriteAll(sContents) && ::fchmod(tNew.Get(), ModeFor(sTarget)) == 0 &&
      ::fsync(tNew.Get()) == 0 && ::rename(sNew.c_str(), sTarget.c_str()) == 0) {
    return {};
  }
  const int lError = errno;
  ::unlink(sNew.c_str());
  return std::strerror(lError);
}

}  // namespace platform
