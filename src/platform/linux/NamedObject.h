#pragma once

#include <sys/types.h>

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/linux/FileDescriptor.h"
#include "platform/linux/SystemObject.h"

namespace platform {

/// A named object's memory: a POSIX shared memory file (shm_overview(7)) that lives as a Windows
/// object does.
///
/// Byte 0 of the file, locked for writing, is the mutex under which an object is set up and torn
/// down; byte 1, locked for reading, says that an opening uses it. Locks of an open file
/// description end with it, so a crashed process leaves a file that nobody uses. Such a file counts
/// as none, and is removed by the next process of the user that opens any named object.
class NamedObject : public SystemObject {
 public:
  /// The name of an object's file: "/varnel-", user number, "-", kind, "-" and the name, escaped
  /// and, where it would get too long for a file, cut with a 128-bit hash in place of the rest.
  /// @return an empty text for an empty name, one with a character 0, or one over 32767 bytes, the
  ///         longest that Windows objects can have
  static std::string FileName(std::string_view sKind, std::string_view sName);

  /// Opens the object of a file name.
  /// @param lSize  when nobody has it open: bytes of the new one, or 0 to create none
  /// @return not open on failure, with the reason as the last system error
  static FileDescriptor Open(const std::string& sFileName, std::uint32_t lSize);

  NamedObject(FileDescriptor tOpened, std::string sFileNameOpened);
  ~NamedObject() override;

  /// Bytes of the object's memory.
  std::size_t Size() const;

  /// Another descriptor of this opening; not open on failure, with the reason in errno.
  FileDescriptor Duplicate() const { return tFile.Duplicate(); }

  /// Maps the memory, shared and writable; nullptr on failure, with the last system error set.
  std::uint8_t* Map(std::size_t lBytes) const;

 private:
  FileDescriptor tFile;
  std::string sFileName;
  pid_t lProcess;
};

}  // namespace platform
