#pragma once

#include <array>
#include <cstdint>
#include <string>

/// The named events between the programs of the suite. Their names come from the configuration temp
/// file. A signal carries no data: what it is about is written into the control block before.
namespace modALLProcess {

/// Programs of the suite, numbered from 0.
inline constexpr std::size_t PROGRAM_COUNT = 13;

/// This program's number: its own event, its placement keys, its value as the active program.
inline constexpr std::int32_t PROGRAM_NUMBER = 12;

/// One program's event, by which it tells that it has closed its last window.
struct ProgramEvent {
  std::uint32_t hEvent = 0;  ///< 0: not open
  std::string sName;
};

/// The events by program number; only this program's own is ever opened here.
inline std::array<ProgramEvent, PROGRAM_COUNT> tProgramEvent;

/// Signalled by the emulator: show the address that is in the control block. 0: not open.
inline std::uint32_t hShowAddrEvent = 0;
inline std::string sShowAddrEventName;

/// Signalled here: a breakpoint was set at the address that is in the control block. 0: not open.
inline std::uint32_t hBreakpointEvent = 0;
inline std::string sBreakpointEventName;

/// A further event of the suite, which this program does not use.
inline std::string sThirdEventName;

/// Creates a named event (automatic reset, not signalled), or opens the one of that name.
/// @return its handle, never 0; throws RuntimeError 80040001H "CreateEvent failed" instead
std::uint32_t CreateNamedEvent(const std::string& sName);

/// Signals an event; 0 is ignored.
void SignalEvent(std::uint32_t hEvent);

/// Closes a handle of any kind and makes the variable 0; one that is 0 is left alone.
void CloseHandleAndClear(std::uint32_t& hObject);

}  // namespace modALLProcess
