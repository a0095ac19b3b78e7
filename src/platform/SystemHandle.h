#pragma once

#include <cstdint>

/// System objects that the program holds by number: named shared memory, named events and
/// exclusively opened files.
///
/// A handle is a 32-bit number, 0 meaning none. What is still open when the process ends, by
/// whatever road, the system takes back. All of it is for the one user-interface thread.
namespace platform {

/// Closes a handle of any kind; 0 is ignored. A view of a block outlives the handle of the block.
void CloseSystemHandle(std::uint32_t hObject);

/// The system's code for the last call on named memory or an event that failed (GetLastError,
/// errno).
std::uint32_t LastSystemError();

}  // namespace platform
