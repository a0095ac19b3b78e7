#pragma once

#include <fcntl.h>
#include <sys/stat.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace platform {

/// Owns an open file description's descriptor. Calls that fail leave their reason in errno.
class FileDescriptor {
 public:
  FileDescriptor() = default;
  explicit FileDescriptor(int hNew) : hDescriptor(hNew) {}
  FileDescriptor(FileDescriptor&& tOther) noexcept;
  FileDescriptor& operator=(FileDescriptor&& tOther) noexcept;
  FileDescriptor(const FileDescriptor&) = delete;
  FileDescriptor& operator=(const FileDescriptor&) = delete;
  ~FileDescriptor();

  bool IsOpen() const { return hDescriptor >= 0; }
  int Get() const { return hDescriptor; }

  /// Another descriptor of the same opening, with its locks.
  FileDescriptor Duplicate() const;

  /// What the open file is; none on failure.
  std::optional<struct stat> Status() const;

  /// Whether there is a name left that leads to it.
  bool HasName() const;

  /// The whole of a plain file under 4 GB.
  std::optional<std::string> ReadAll() const;

  /// Appends a text whole.
  bool WriteAll(std::string_view sText) const;

  /// Replaces the whole contents of an open file. Its room on the disk is made first, so that a
  /// full disk leaves the old contents; a crash in the middle does not. It is on the disk then.
  bool WriteInPlace(std::string_view sText) const;

  /// Gives the file the owner and group of another one; false when this user may not.
  bool TakeOwner(const struct stat& tOld) const;

  /// An open-file-description lock (fcntl(2)): it belongs to this opening, not to the process, and
  /// goes with it.
  /// @param lCommand  F_OFD_SETLK, or F_OFD_SETLKW to wait
  /// @param iType     F_RDLCK, F_WRLCK or F_UNLCK
  /// @param lFirst    first byte; those of a file need not exist to be locked
  /// @param lBytes    how many, 0 for all to the end
  bool Lock(int lCommand, short iType, off_t lFirst, off_t lBytes) const;

  /// Locks all of the file for writing, if nobody else has a lock on it.
  bool LockWhole() const { return Lock(F_OFD_SETLK, F_WRLCK, 0, 0); }

  /// Whether another opening holds any lock on a byte.
  bool LockedElsewhere(off_t lByte) const;

 private:
  int hDescriptor = -1;
};

/// open(2), closed on exec, never a controlling terminal.
FileDescriptor OpenFile(const std::string& sPath, int lFlags, mode_t lMode = 0);

/// The path that a name stands for, without symbolic links; the file itself may be yet to be made.
/// A last link to a device or a pipe stays: in /proc, what it says is no path.
/// A link that another user put into a folder where everyone may put things is not followed, as the
/// kernel's protected_symlinks (proc_sys_fs(5)) has it: no file of this user is to be overwritten
/// by way of it.
/// @return none on failure, with the reason in errno: EACCES for such a link
std::optional<std::string> TargetPath(const std::string& sPath);

/// Whether a file that could not be replaced by another one, for the reason in errno, may still be
/// written in place: its folder is closed, it is another user's or a mount, or its file system does
/// not keep modes.
bool MayBeWrittenInPlace();

/// Whether two results of stat(2) are about the same file.
inline bool SameFile(const struct stat& tLeft, const struct stat& tRight) {
  return tLeft.st_dev == tRight.st_dev && tLeft.st_ino == tRight.st_ino;
}

}  // namespace platform
