#include "platform/linux/FileDescriptor.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <filesystem>
#include <limits>
#include <utility>

namespace platform {

namespace {

// A line more in a large text must not double it.
constexpr std::size_t ROOM_TO_GROW = 4096;

constexpr int MOST_LINKS = 40;  // as the kernel follows

// Whether a link is another user's in a folder where everyone may put things.
bool IsTrap(const struct stat& tFolder, const struct stat& tLink) {
  constexpr mode_t EVERYONES = S_ISVTX | S_IWOTH;
  return (tFolder.st_mode & EVERYONES) == EVERYONES && tLink.st_uid != ::geteuid() &&
         tLink.st_uid != tFolder.st_uid;
}

bool IsStream(const std::string& sPath) {
  struct stat tStatus = {};
  return ::stat(sPath.c_str(), &tStatus) == 0 && !S_ISREG(tStatus.st_mode) &&
         !S_ISDIR(tStatus.st_mode);
}

// Repeats a system call that a signal interrupted.
template <typename Call>
auto Uninterrupted(Call fnDo) {
  auto lResult = fnDo();
  while (lResult == -1 && errno == EINTR) lResult = fnDo();
  return lResult;
}

struct flock ByteRange(short iType, off_t lFirst, off_t lBytes) {
  struct flock tRange = {};
  tRange.l_type = iType;
  tRange.l_whence = SEEK_SET;
  tRange.l_start = lFirst;
  tRange.l_len = lBytes;
  return tRange;
}

}  // namespace

FileDescriptor::FileDescriptor(FileDescriptor&& tOther) noexcept
    : hDescriptor(std::exchange(tOther.hDescriptor, -1)) {}

FileDescriptor& FileDescriptor::operator=(FileDescriptor&& tOther) noexcept {
  std::swap(hDescriptor, tOther.hDescriptor);
  return *this;
}

FileDescriptor::~FileDescriptor() {
  if (IsOpen()) ::close(hDescriptor);
}

FileDescriptor FileDescriptor::Duplicate() const {
  return FileDescriptor(::fcntl(hDescriptor, F_DUPFD_CLOEXEC, 0));
}

std::optional<struct stat> FileDescriptor::Status() const {
  struct stat tStatus = {};
  if (::fstat(hDescriptor, &tStatus) != 0) return std::nullopt;
  return tStatus;
}

bool FileDescriptor::HasName() const {
  const auto tStatus = Status();
  return tStatus && tStatus->st_nlink > 0;
}

std::optional<std::string> FileDescriptor::ReadAll() const {
  const auto tStatus = Status();
  if (!tStatus) return std::nullopt;
  if (!S_ISREG(tStatus->st_mode) || tStatus->st_size > std::numeric_limits<std::uint32_t>::max()) {
    errno = S_ISREG(tStatus->st_mode) ? EFBIG : EINVAL;
    return std::nullopt;
  }
  std::string sText;
  sText.reserve(static_cast<std::size_t>(tStatus->st_size) + ROOM_TO_GROW);
  sText.resize(static_cast<std::size_t>(tStatus->st_size));
  std::size_t lRead = 0;
  while (lRead < sText.size()) {
    const auto lPart = Uninterrupted([&] {
      return ::pread(hDescriptor, sText.data() + lRead, sText.size() - lRead,
                     static_cast<off_t>(lRead));
    });
    if (lPart < 0) return std::nullopt;
    if (lPart == 0) break;
    lRead += static_cast<std::size_t>(lPart);
  }
  sText.resize(lRead);
  return sText;
}

bool FileDescriptor::WriteAll(std::string_view sText) const {
  while (!sText.empty()) {
    const auto lPart =
        Uninterrupted([&] { return ::write(hDescriptor, sText.data(), sText.size()); });
    if (lPart < 0) return false;
    sText.remove_prefix(static_cast<std::size_t>(lPart));
  }
  return true;
}

bool FileDescriptor::WriteInPlace(std::string_view sText) const {
  const auto tOld = Status();
  if (!tOld) return false;
  const auto lSize = static_cast<off_t>(sText.size());
  const int lError = lSize > tOld->st_size ? ::posix_fallocate(hDescriptor, 0, lSize) : 0;
  if (lError == ENOSPC || lError == EDQUOT || lError == EFBIG) {
    static_cast<void>(::ftruncate(hDescriptor, tOld->st_size));
    errno = lError;
    return false;
  }
  return ::lseek(hDescriptor, 0, SEEK_SET) == 0 && WriteAll(sText) &&
         ::ftruncate(hDescriptor, lSize) == 0 && ::fsync(hDescriptor) == 0;
}

bool FileDescriptor::TakeOwner(const struct stat& tOld) const {
  const auto tOwn = Status();
  return tOwn && ((tOwn->st_uid == tOld.st_uid && tOwn->st_gid == tOld.st_gid) ||
                  ::fchown(hDescriptor, tOld.st_uid, tOld.st_gid) == 0);
}

bool FileDescriptor::Lock(int lCommand, short iType, off_t lFirst, off_t lBytes) const {
  struct flock tRange = ByteRange(iType, lFirst, lBytes);
  return Uninterrupted([&] { return ::fcntl(hDescriptor, lCommand, &tRange); }) == 0;
}

bool FileDescriptor::LockedElsewhere(off_t lByte) const {
  struct flock tRange = ByteRange(F_WRLCK, lByte, 1);
  return ::fcntl(hDescriptor, F_OFD_GETLK, &tRange) != 0 || tRange.l_type != F_UNLCK;
}

FileDescriptor OpenFile(const std::string& sPath, int lFlags, mode_t lMode) {
  const int lAllFlags = lFlags | O_CLOEXEC | O_NOCTTY;
  return FileDescriptor(Uninterrupted([&] { return ::open(sPath.c_str(), lAllFlags, lMode); }));
}

std::optional<std::string> TargetPath(const std::string& sPath) {
  std::string sTarget = sPath.starts_with('/') ? "/" : "./";
  std::string sRest = sPath;  // behind sTarget, which has no link in it
  for (int lLinks = 0; !sRest.empty();) {
    const std::size_t lName = std::min(sRest.find_first_not_of('/'), sRest.size());
    const std::size_t lEnd = std::min(sRest.find('/', lName), sRest.size());
    const std::string sName = sRest.substr(lName, lEnd - lName);
    sRest.erase(0, lEnd);
    struct stat tFolder = {};
    struct stat tNamed = {};
    if (::lstat(sTarget.c_str(), &tFolder) != 0) return std::nullopt;
    const std::string sNamed = sTarget + sName;
    if (::lstat(sNamed.c_str(), &tNamed) != 0) {
      if (errno != ENOENT || !sRest.empty()) return std::nullopt;
      return sNamed;
    }
    if (S_ISLNK(tNamed.st_mode)) {
      const int lError = IsTrap(tFolder, tNamed) ? EACCES : ++lLinks > MOST_LINKS ? ELOOP : 0;
      std::error_code tError(lError, std::generic_category());
      if (!tError && sRest.empty() && IsStream(sNamed)) return sNamed;
      std::string sLink;
      if (!tError) sLink = std::filesystem::read_symlink(sNamed, tError);
      if (tError) {
        errno = tError.value();
        return std::nullopt;
      }
      if (sLink.starts_with('/')) sTarget = "/";
      sRest.insert(0, sLink);
    } else {
      sTarget = sNamed;
      if (!sRest.empty()) sTarget += '/';
    }
  }
  return sTarget;
}

bool MayBeWrittenInPlace() {
  constexpr std::array alReason = {EACCES, EPERM, EROFS, EBUSY, EOPNOTSUPP, ENOSYS, EINVAL};
  return std::ranges::find(alReason, errno) != alReason.end();
}

}  // namespace platform
