#include "platform/ExclusiveFile.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <utility>

#include "platform/linux/FileDescriptor.h"
#include "platform/linux/ReplacementFile.h"
#include "platform/linux/SystemObject.h"

namespace platform {

namespace {

// How often a file that is replaced between opening and lock is opened again.
constexpr int MOST_TRIES = 100;

constexpr mode_t OWN_USERS_ALONE = 0600;

// Why a file could not be opened for reading and writing, as errno has it.
std::string ReasonNotOpened(const std::string& sPath) {
  const int lError = errno;
  const bool bRight = lError == EACCES || lError == EPERM || lError == EROFS;
  return bRight && ::access(sPath.c_str(), R_OK) == 0 ? "It is read-only" : std::strerror(lError);
}

// Whether a path leads to an open file, through symbolic links where there are any.
bool LeadsTo(const std::string& sPath, const FileDescriptor& tFile) {
  struct stat tNamed = {};
  const auto tOpened = tFile.Status();
  return tOpened && ::stat(sPath.c_str(), &tNamed) == 0 && SameFile(tNamed, *tOpened);
}

// The lock is on the file itself; replacing the file means that the holder's lock moves to the new
// one before its name does, so that at every moment the name leads to a locked file.
class ExclusiveFile final : public SystemObject {
 public:
  ExclusiveFile(FileDescriptor tLocked, std::string sPathOpened)
      : tFile(std::move(tLocked)), sPath(std::move(sPathOpened)) {}

  std::optional<std::string> Read() {
    tRead = tFile.Status();
    return tFile.ReadAll();
  }

  // The new text goes into a file beside the old one, which takes its name when all of it is on the
  // disk: a crash or a full disk at any moment leaves the old or the new text whole. A file that
  // may be written but not replaced (its folder is closed, it is another user's, or a mount) is
  // written in place, since its settings would else never be saved.
  bool Write(std::string_view sText) {
    if (Replace(sText)) return true;
    if (!MayBeWrittenInPlace() || !IsAsRead()) return false;
    tRead.reset();
    return tFile.WriteInPlace(sText);
  }

 private:
  bool Replace(std::string_view sText) {
    const auto sTarget = TargetPath(sPath);
    if (!sTarget) return false;
    ReplacementFile tNew(*sTarget);
    if (!tNew.File().IsOpen() || !tNew.File().LockWhole() || !tNew.File().WriteAll(sText) ||
        !TakeOver(tNew.File(), *sTarget) || !tNew.TakeName()) {
      return false;
    }
    tFile = tNew.Release();
    tRead.reset();
    return true;
  }

  // Readies a new file for the name of the one that is held: same owner, group and mode, on the
  // disk. A program that knows nothing of the lock may have replaced or written the held file
  // meanwhile; its text must stand.
  bool TakeOver(const FileDescriptor& tNew, const std::string& sTarget) const {
    const auto tOld = tFile.Status();
    if (!tOld || !tNew.TakeOwner(*tOld) || ::fchmod(tNew.Get(), tOld->st_mode & 07777U) != 0 ||
        ::fsync(tNew.Get()) != 0) {
      return false;
    }
    errno = ESTALE;
    return LeadsTo(sTarget, tFile) && IsAsRead();
  }

  // Whether the held file is what the last Read found; true when nothing was read.
  bool IsAsRead() const {
    const auto tNow = tFile.Status();
    return tNow && (!tRead || (tNow->st_size == tRead->st_size &&
                               tNow->st_mtim.tv_sec == tRead->st_mtim.tv_sec &&
                               tNow->st_mtim.tv_nsec == tRead->st_mtim.tv_nsec));
  }

  FileDescriptor tFile;
  std::optional<struct stat> tRead;
  std::string sPath;
};

}  // namespace

std::uint32_t OpenExclusiveFile(const std::string& sPath, std::string* psReason) {
  const auto fnFail = [psReason](std::string_view sReason) {
    if (psReason != nullptr) *psReason = sReason;
    return 0U;
  };
  fnFail("");
  for (int lTry = 0; lTry < MOST_TRIES; ++lTry) {
    FileDescriptor tFile = OpenFile(sPath, O_RDWR | O_CREAT | O_NONBLOCK, OWN_USERS_ALONE);
    if (!tFile.IsOpen()) return fnFail(ReasonNotOpened(sPath));
    const auto tStatus = tFile.Status();
    if (!tStatus) return fnFail(std::strerror(errno));
    if (!S_ISREG(tStatus->st_mode)) return fnFail("It is not a plain file");
    if (tStatus->st_uid == ::geteuid() && (tStatus->st_mode & 0777U & ~OWN_USERS_ALONE) != 0) {
      static_cast<void>(::fchmod(tFile.Get(), OWN_USERS_ALONE));  // where modes are kept
    }
    if (!tFile.LockWhole()) {
      const bool bHeld = errno == EAGAIN || errno == EACCES;
      return fnFail(bHeld ? "" : "Its file system has no locks");
    }
    // Its holder may have replaced the file between opening and lock.
    if (LeadsTo(sPath, tFile)) {
      if (const auto sTarget = TargetPath(sPath)) ReplacementFile::RemoveStrays(*sTarget);
      return AddSystemObject(std::make_unique<ExclusiveFile>(std::move(tFile), sPath));
    }
  }
  return 0;
}

std::optional<std::string> ReadExclusiveFile(std::uint32_t hFile) {
  auto* const pFile = SystemObjectAs<ExclusiveFile>(hFile);
  return pFile != nullptr ? pFile->Read() : std::nullopt;
}

bool WriteExclusiveFile(std::uint32_t hFile, std::string_view sText) {
  auto* const pFile = SystemObjectAs<ExclusiveFile>(hFile);
  return pFile != nullptr && pFile->Write(sText);
}

}  // namespace platform
