#pragma once

#include <array>
#include <cstdint>
#include <string_view>

#include "platform/Toolkit.h"

/// Where the suite's windows stand: one row of placement keys per program of the suite, kept in
/// the settings file that all of them share.
namespace modALLProcess {

/// Programs of the suite, numbered 0 to 12; this one is PROGRAM_NUMBER of the emulator link.
inline constexpr std::int16_t PLACEMENT_ROWS = 13;

/// A window's place in twips; lWindowState is 0 normal, 1 minimised, 2 maximised.
struct WindowPlacement {
  std::int32_t lTop = 0;
  std::int32_t lLeft = 0;
  std::int32_t lHeight = 0;
  std::int32_t lWidth = 0;
  std::int32_t lLoaded = 0;
  std::int32_t lWindowState = 0;
};

extern std::array<WindowPlacement, PLACEMENT_ROWS> tWindowPlacement;   ///< as last read or captured
extern std::array<WindowPlacement, PLACEMENT_ROWS> tPlacementDefault;  ///< fitted to the screen

/// Fills tPlacementDefault and fits it to a screen of a size in twips.
void InitPlacementDefaults(platform::Size tScreen);

/// Reads all rows from the settings file, a value that makes no sense as its default, and applies
/// row iProgram (0 to 12) to the window.
void RestoreWindowPlacement(std::int16_t iProgram, platform::Form& frm);

/// Takes the window's place into row iProgram; false when no window of its name is loaded.
bool CaptureWindowPlacement(std::int16_t iProgram, const platform::Form& frm);

/// Puts row iProgram into the settings, which IniFlush then writes.
/// @param sWhich  empty for all keys, or the one of "top", "left", "height", "width",
///                "windowstate", "loaded"; "loaded" is only written with bWithLoaded
void SaveWindowPlacement(std::int16_t iProgram, std::string_view sWhich, bool bWithLoaded);

/// True when a window of that name is loaded, whatever its case.
bool IsFormLoaded(std::string_view sName);

}  // namespace modALLProcess
