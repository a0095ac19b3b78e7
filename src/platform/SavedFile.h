#pragma once

#include <string>
#include <string_view>

namespace platform {

/// Creates a file with these contents, or replaces the plain file of that name whole: a failure
/// leaves an existing file as it was. One that may be written but not replaced (Linux: in a folder
/// that is closed to the user) is written in place, once its room on the disk is made. A link that
/// another user put into a folder where everyone may put things (Linux) is refused.
/// @return an empty text, or the system's reason for the failure
std::string SaveFileWhole(const std::string& sPath, std::string_view sContents);

/// SaveFileWhole, but a device or a pipe is written to.
std::string SaveFileOrWriteStream(const std::string& sPath, std::string_view sContents);

}  // namespace platform
