#pragma once

#include <string>
#include <utility>

#include "platform/linux/FileDescriptor.h"

namespace platform {

/// A new file beside another one, made to take its name in one step: a crash or a full disk at any
/// moment leaves the old or the new text whole.
///
/// It is locked for writing as a whole from its first moment on, so that one without a lock is what
/// a killed program left. Calls that fail leave their reason in errno.
class ReplacementFile {
 public:
  /// Makes it, open to the current user alone, in the folder of a path without symbolic links
  /// (TargetPath); it is not open when that fails.
  explicit ReplacementFile(std::string sPath);
  ReplacementFile(const ReplacementFile&) = delete;
  ReplacementFile& operator=(const ReplacementFile&) = delete;
  ~ReplacementFile();  ///< removes it when it has not got the name

  const FileDescriptor& File() const { return tFile; }

  /// Gives the file the other one's name.
  bool TakeName();

  /// Hands the file over, lock and all.
  FileDescriptor Release() { return std::move(tFile); }

  /// Removes what killed programs of this user left beside a file.
  static void RemoveStrays(const std::string& sPath);

 private:
  std::string sPath;
  std::string sNew;  // empty when there is none of that name any more
  FileDescriptor tFile;
};

}  // namespace platform
