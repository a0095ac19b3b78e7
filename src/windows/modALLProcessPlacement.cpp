#include "windows/modALLProcessPlacement.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string>

#include "config/modAllIni.h"

namespace modALLProcess {

std::array<WindowPlacement, PLACEMENT_ROWS> tWindowPlacement{};
std::array<WindowPlacement, PLACEMENT_ROWS> tPlacementDefault{};

namespace {

constexpr std::string_view SECTION = "GENERAL";

// Top, left, height and width of every program's window on a desktop that has room for all.
constexpr std::array<WindowPlacement, PLACEMENT_ROWS> DESIGN_PLACEMENT{{
    {50, 500, 8400, 8595},
    {4250, 4798, 6195, 6822},
    {8550, 500, 6900, 6975},
    {50, 9195, 7545, 9355},
    {8550, 500, 2940, 8535},
    {7695, 9195, 7665, 9720},
    {0, 0, 0, 0},
    {0, 0, 0, 0},
    {11590, 500, 1560, 8535},
    {4250, 9195, 7155, 11535},
    {50, 15670, 6960, 11130},
    {7010, 15670, 8760, 11130},
    {50, 9195, 8415, 6375},
}};

/// A field of a row and the end of its key, in the order in which they are read and written.
struct PlacementKey {
  std::string_view sSuffix;
  std::int32_t WindowPlacement::*plField;
};

constexpr std::array<PlacementKey, 6> PLACEMENT_KEYS{{
    {"top", &WindowPlacement::lTop},
    {"left", &WindowPlacement::lLeft},
    {"height", &WindowPlacement::lHeight},
    {"width", &WindowPlacement::lWidth},
    {"loaded", &WindowPlacement::lLoaded},
    {"windowstate", &WindowPlacement::lWindowState},
}};

std::string KeyName(std::int16_t iProgram, std::string_view sSuffix) {
  return "window_" + std::to_string(iProgram) + "_" + std::string(sSuffix);
}

std::int32_t NumberOr(std::string_view sText, std::int32_t lDefault) {
  std::int32_t lValue = 0;
  const auto [pEnd, eError] = std::from_chars(sText.data(), sText.data() + sText.size(), lValue);
  return eError == std::errc{} && pEnd == sText.data() + sText.size() ? lValue : lDefault;
}

std::int32_t Rounded(double dTwips) { return static_cast<std::int32_t>(std::nearbyint(dTwips)); }

}  // namespace

void InitPlacementDefaults(platform::Size tScreen) {
  tPlacementDefault = DESIGN_PLACEMENT;
  for (WindowPlacement& tRow : tPlacementDefault) {
    if (tScreen.lHeight < tRow.lTop) {
      tRow.lTop = std::max(tScreen.lHeight - tRow.lHeight, 0);
    }
    if (tScreen.lWidth < tRow.lLeft) {
      tRow.lLeft = std::max(tScreen.lWidth - tRow.lWidth, 0);
    }
  }
}

void RestoreWindowPlacement(std::int16_t iProgram, platform::Form& frm) {
  InitPlacementDefaults(platform::TheToolkit().ScreenSize());
  for (std::int16_t iRow = 0; iRow < PLACEMENT_ROWS; ++iRow) {
    const auto lRow = static_cast<std::size_t>(iRow);
    const WindowPlacement& tDefault = tPlacementDefault[lRow];
    WindowPlacement& tRow = tWindowPlacement[lRow];
    for (const auto& [sSuffix, plField] : PLACEMENT_KEYS) {
      const std::int32_t lDefault = tDefault.*plField;
      tRow.*plField = NumberOr(
          modAllIni::IniGetValue(SECTION, KeyName(iRow, sSuffix), std::to_string(lDefault)),
          lDefault);
    }
    if (tRow.lWindowState < 0 || tRow.lWindowState > 2) {
      tRow.lWindowState = tDefault.lWindowState;
    }
  }
  const WindowPlacement& tRow = tWindowPlacement[static_cast<std::size_t>(iProgram)];
  if (tRow.lWindowState == 0) {
    frm.SetTop(tRow.lTop);
    frm.SetLeft(tRow.lLeft);
    frm.SetHeight(tRow.lHeight);
    frm.SetWidth(tRow.lWidth);
  }
  frm.SetState(static_cast<platform::WindowState>(tRow.lWindowState));
}

bool CaptureWindowPlacement(std::int16_t iProgram, const platform::Form& frm) {
  if (!IsFormLoaded(frm.Name())) {
    return false;
  }
  const platform::FormPlace tPlace = frm.Place();
  WindowPlacement& tRow = tWindowPlacement[static_cast<std::size_t>(iProgram)];
  tRow.lTop = Rounded(tPlace.dTop);
  tRow.lLeft = Rounded(tPlace.dLeft);
  tRow.lHeight = Rounded(tPlace.dHeight);
  tRow.lWidth = Rounded(tPlace.dWidth);
  tRow.lWindowState = static_cast<std::int32_t>(frm.State());
  return true;
}

void SaveWindowPlacement(std::int16_t iProgram, std::string_view sWhich, bool bWithLoaded) {
  const WindowPlacement& tRow = tWindowPlacement[static_cast<std::size_t>(iProgram)];
  for (const auto& [sSuffix, plField] : PLACEMENT_KEYS) {
    const bool bWanted = sWhich.empty() || sWhich == sSuffix;
    if (bWanted && (sSuffix != "loaded" || bWithLoaded)) {
      modAllIni::IniSetValue(SECTION, KeyName(iProgram, sSuffix), std::to_string(tRow.*plField));
    }
  }
}

bool IsFormLoaded(std::string_view sName) {
  return platform::TheToolkit().FormByName(sName) != nullptr;
}

}  // namespace modALLProcess
