// Mouse and keyboard on the listing, and the pop-up menu with the breakpoint command.

#include <cmath>

#include "disass/frmDisass.h"
#include "disass/frmDisassDesign.h"
#include "link/modALLProcessEvents.h"
#include "link/modALLSharedMap.h"

namespace {

constexpr std::int16_t RIGHT_BUTTON = 2;
constexpr std::int32_t ENTER = 13;  // as a character
constexpr std::int16_t KEY_MENU = 93;

}  // namespace

void frmDisass::lstDis_Click() {
  if (bListSelecting) {
    return;
  }
  if (EditorOpen()) {
    OpenAsmEditor();
  } else {
    do_UserActivity();
  }
}

void frmDisass::lstDis_DblClick() { OpenAsmEditor(); }

std::int32_t frmDisass::lstDis_KeyPress(std::int32_t lCharacter) {
  if (lCharacter != ENTER) {
    return lCharacter;
  }
  if (const std::int32_t lLine = lstDis->SelectedIndex(); lLine >= 0) {
    EnsureListIndexVisible(lLine);  // the list may have been scrolled away from it
  }
  OpenAsmEditor();
  return 0;
}

/// The menu key opens the pop-up menu below the selected line.
bool frmDisass::lstDis_KeyDown(std::int16_t iKeyCode) {
  if (iKeyCode != KEY_MENU) {
    return false;
  }
  const std::int32_t lLine = lstDis->SelectedIndex();
  if (lLine < 0 || lLine >= tListing.LineCount() || EditorOpen()) {
    return true;
  }
  EnsureListIndexVisible(lLine);
  const platform::TwipsRect tLine = EditorPlace(lLine);
  OpenPopup(lLine, platform::TwipsPoint{tLine.lLeft, tLine.lTop + tLine.lHeight});
  return true;
}

/// Shows the pop-up menu of a line, whose address its command is for.
void frmDisass::OpenPopup(std::int32_t lLine, std::optional<platform::TwipsPoint> tAt) {
  lMenuAddr = modDISListing::LineAddress(tListing.Line(lLine));
  frmForm->ShowPopupMenu(frmDisassDesign::MNU_DIS_POPUP, tAt);
  lMenuAddr = -1;
}

void frmDisass::lstDis_MouseUp(std::int16_t iButton, double dX, double dY) {
  if (iButton != RIGHT_BUTTON) {
    return;
  }
  const std::int32_t lLine = ListIndexFromPoint(dX, dY);
  if (lLine < 0) {
    return;
  }
  if (EditorOpen()) {
    SelectQuietly(lLine);
    OpenAsmEditor();
    return;
  }
  lstDis->SetSelectedIndex(lLine);
  OpenPopup(lLine, std::nullopt);
}

/// The line under a point in twips within the list, or -1.
std::int32_t frmDisass::ListIndexFromPoint(double dX, double dY) const {
  const platform::Toolkit& tToolkit = platform::TheToolkit();
  const std::uint32_t lItem = lstDis->ItemFromPoint(
      static_cast<std::int32_t>(std::nearbyint(dX / tToolkit.TwipsPerPixelX())),
      static_cast<std::int32_t>(std::nearbyint(dY / tToolkit.TwipsPerPixelY())));
  const auto lNearest = static_cast<std::int32_t>(lItem & 0xFFFFU);
  return (lItem >> 16U) == 0 && lNearest < tListing.LineCount() ? lNearest : -1;
}

void frmDisass::mnuSetBreakpoint_Click() {
  // While the menu was open, the emulator may have asked for another address, whose line is
  // selected since: the command is meant for the line that the menu was opened on.
  if (lMenuAddr < 0) {
    return;
  }
  modALLSharedMap::WriteControlField(modALLSharedMap::ControlField::BreakpointAddr, lMenuAddr);
  modALLProcess::SignalEvent(modALLProcess::hBreakpointEvent);
}
