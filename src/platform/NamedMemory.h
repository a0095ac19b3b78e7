#pragma once

#include <cstdint>
#include <string>

#include "platform/SystemHandle.h"

/// Shared memory that processes of one user find by name.
///
/// A block exists as long as any process has it open, reads as zeros when new, and is gone after
/// the last close or crash. A name is a text without character 0, compared byte for byte; an empty
/// one is refused. On Windows, where blocks and events share their names, so is one with a
/// backslash that begins no name space ("Local\\").
namespace platform {

/// Opens an existing block for reading and writing.
/// @return its handle, or 0 when there is none of that name or it cannot be opened
std::uint32_t OpenNamedMemory(const std::string& sName);

/// Creates a block, or opens the one of that name, whatever its size.
/// @param lSize  bytes of a new block, at least 1; all of it is set aside at once, so that no
///               later write into it can fail for want of memory
/// @return its handle, or 0 on failure
std::uint32_t CreateNamedMemory(const std::string& sName, std::uint32_t lSize);

/// Maps a whole block for reading and writing; the view starts on a page boundary.
/// @return the view, or nullptr on failure, such as for a block of 4 GB or more
std::uint8_t* MapNamedMemory(std::uint32_t hMemory);

/// Bytes that a view covers, 0 for what is no view. A system may round up to whole pages, never
/// down. Where another program can cut a block that is in use (Linux), to touch what is gone would
/// end the process, so that this is to be asked before each use: a view of a block that has shrunk
/// covers nothing.
std::uint32_t NamedMemorySize(const std::uint8_t* pView);

/// Ends a view; nullptr and what is no view are ignored.
void UnmapNamedMemory(std::uint8_t* pView);

}  // namespace platform
