#pragma once

#include <cstdint>
#include <optional>
#include <string>

/// Folders, files and time, as far as they differ between systems.
namespace platform {

/// Stands between the parts of a path.
extern const char PATH_SEPARATOR;

/// The folder under which programs keep lasting settings of the current user: the environment
/// variable LOCALAPPDATA. Linux, where it is not set: XDG_DATA_HOME, else ~/.local/share, after the
/// XDG conventions, with missing folders made.
/// @return the path without a trailing separator; none when there is no such folder that other
///         users cannot change
std::optional<std::string> UserDataFolder();

/// The folder under which programs of the current user hand files to each other: the environment
/// variable TEMP. Linux, where it is not set: XDG_RUNTIME_DIR when it is the user's alone, else
/// the folder varnel-<user id> in TMPDIR or /tmp, made when missing.
/// @return as UserDataFolder
std::optional<std::string> UserTempFolder();

/// Whether a file or a folder exists under a path; what cannot be looked at (it is behind another
/// user's link or folder, or the disk fails) may be one, and counts as one.
bool PathExists(const std::string& sPath);

/// Creates one folder, open to the current user alone; its parent must exist.
/// @return false when there is nothing under that path afterwards
bool CreateFolder(const std::string& sPath);

/// Sees to it that what is read from a folder is the current user's own, where the system leaves
/// that to programs (Linux): one of the user's own that others can read is shut to them. A file in
/// its place is none of this function's business.
/// @return false when another user owns the folder or can write it, or can put a link in its place
bool SecureFolder(const std::string& sPath);

/// Largest file that ReadFileText reads, in bytes.
inline constexpr std::int64_t LARGEST_FILE_TEXT = 0x1000000;

/// A file's whole contents, or why there are none.
struct FileText {
  enum class Outcome : std::uint8_t { Read, Missing, Unreadable } eOutcome = Outcome::Unreadable;
  std::string sText;  ///< byte for byte; empty unless read
};

/// Reads a whole file; anything but a plain file of at most LARGEST_FILE_TEXT is unreadable.
FileText ReadFileText(const std::string& sPath);

/// Lets the thread sleep.
void SleepMilliseconds(std::uint32_t lMilliseconds);

}  // namespace platform
