#include "platform/linux/FileDescriptor.h"

#include <unistd.h>

#include <cerrno>
#include <limits>
#include <utility>

namespace platform {

namespace {

// Repeats a system call that a signal interrupted.
template <typename fnCall>
auto Uninterrupted(fnCall fnDo) {
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

std::optional<struct stat> FileDescriptor::Status() const {
  struct stat tStatus = {};
  if (::fstat(hDescriptor, &tStatus) != 0) return std::nullopt;
  return tStatus;
}

std::optional<std::string> FileDescriptor::ReadAll() const {
  const auto tStatus = Status();
  if (!tStatus) return std::nullopt;
  if (!S_ISREG(tStatus->st_mode) || tStatus->st_size > std::numeric_limits<std::uint32_t>::max()) {
    errno = S_ISREG(tStatus->st_mode) ? EFBIG : EINVAL;
    return std::nullopt;
  }
  std::string sText(static_cast<std::size_t>(tStatus->st_size), '\0');
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

bool FileDescriptor::Lock(int iCommand, short iType, off_t lFirst, off_t lBytes) const {
  struct flock tRange = ByteRange(iType, lFirst, lBytes);
  return Uninterrupted([&] { return ::fcntl(hDescriptor, iCommand, &tRange); }) == 0;
}

bool FileDescriptor::LockedElsewhere(off_t lByte) const {
  struct flock tRange = ByteRange(F_WRLCK, lByte, 1);
  return ::fcntl(hDescriptor, F_OFD_GETLK, &tRange) != 0 || tRange.l_type != F_UNLCK;
}

FileDescriptor OpenFile(const std::string& sPath, int iFlags, mode_t lMode) {
  const int iAllFlags = iFlags | O_CLOEXEC | O_NOCTTY;
  return FileDescriptor(Uninterrupted([&] { return ::open(sPath.c_str(), iAllFlags, lMode); }));
}

}  // namespace platform
