#pragma once

#include <string>
#include <string_view>

namespace platform {

/// Creates a file with these contents, or replaces the plain file of that name whole: a failure at
/// any point leaves an existing file as it was.
/// @return an empty text, or the system's reason for the failure
std::string SaveFileWhole(const std::string& sPath, std::string_view sContents);

}  // namespace platform
