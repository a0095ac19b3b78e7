#pragma once

#include <cstdint>
#include <string>

#include "platform/SystemHandle.h"

/// Events that processes of one user find by name, with the names and the life of named shared
/// memory. An event is signalled or not, so many signals before a wait count once, and a wait that
/// finds it signalled takes the signal away. Memory written before a signal is seen by whoever
/// took that signal.
namespace platform {

/// Creates an event, not signalled, or opens the one of that name as it is.
/// @return its handle, or 0 on failure
std::uint32_t CreateNamedEvent(const std::string& sName);

/// Signals an event; false when the handle is none, or another program has cut the event's memory
/// (Linux), which is the same to the next two.
bool SetNamedEvent(std::uint32_t hEvent);

/// Takes a signal away that may be there; false when the handle is none.
bool ResetNamedEvent(std::uint32_t hEvent);

/// Asks without waiting.
/// @return true when the event was signalled; it no longer is then, for any process
bool WaitNamedEvent(std::uint32_t hEvent);

}  // namespace platform
