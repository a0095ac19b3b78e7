#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/SystemHandle.h"

/// A file that one opening holds alone, among all processes that open it through this seam. Closed
/// with CloseSystemHandle, or by the end of the process, however it ends.
namespace platform {

/// Opens a file for reading and writing, shared with nobody, and creates it empty when missing.
/// Does not wait. One of the user's own that others could read (Linux) is made private by that: who
/// can read a file can lock it.
/// @param psReason  receives, where wanted, why it cannot be had however long one waits; empty when
///                  it was had, or anyone holds it
/// @return its handle, or 0 on failure
std::uint32_t OpenExclusiveFile(const std::string& sPath, std::string* psReason = nullptr);

/// The whole contents, byte for byte; none when it cannot be read or has 4 GB or more.
std::optional<std::string> ReadExclusiveFile(std::uint32_t hFile);

/// Replaces the whole contents. The handle goes on holding the file alone.
/// @return false when the new text could not be stored, or when a program that knows nothing of the
///         hold (Linux) has changed the file since it was read; where the file can be replaced in
///         one step (Linux, in a folder that the user may write) the old contents then stand
bool WriteExclusiveFile(std::uint32_t hFile, std::string_view sText);

}  // namespace platform
