#include "windows/modALLForms.h"

#include <algorithm>
#include <exception>

namespace modALLForms {

namespace {

std::array<Window*, MAX_WINDOWS> afrmWindow{};         // the open window in each slot, or none
std::array<std::string, MAX_WINDOWS> asWindowCaption;  // captions without " - Window N"
std::array<std::int32_t, MAX_WINDOWS> alWindowNo{};    // the slot's own number, -1 when free
std::int32_t lActiveWindow = -1;                       // slot of the current window, -1: none
bool bFormsInit = false;

std::size_t Slot(std::int32_t lSlot) { return static_cast<std::size_t>(lSlot); }

bool IsOccupied(std::int32_t lSlot) {
  return lSlot >= 0 && lSlot < MAX_WINDOWS && alWindowNo[Slot(lSlot)] != -1;
}

void InitWindowTable() {
  if (!bFormsInit) {
    alWindowNo.fill(-1);
    lActiveWindow = -1;
    bFormsInit = true;
  }
}

std::int32_t FindWindowSlot(const Window* frm) {
  const auto itFound = std::ranges::find(afrmWindow, frm);
  return frm == nullptr || itFound == afrmWindow.end()
             ? -1
             : static_cast<std::int32_t>(itFound - afrmWindow.begin());
}

/// The lowest slot that is free (or occupied), or -1.
std::int32_t LowestSlot(bool bOccupied) {
  for (std::int32_t lSlot = 0; lSlot < MAX_WINDOWS; ++lSlot) {
    if (IsOccupied(lSlot) == bOccupied) {
      return lSlot;
    }
  }
  return -1;
}

std::int32_t FreeWindowSlot() { return LowestSlot(false); }

/// Runs a step whose errors are ignored: a caption or menu that cannot be made, as when memory runs
/// out, is not to end sixteen windows.
template <typename Step>
void IgnoringErrors(Step fnStep) {
  try {
    fnStep();
  } catch (const std::exception&) {  // NOLINT(bugprone-empty-catch)
  }
}

void FixCurrentWindow() {
  if (!IsOccupied(lActiveWindow)) {
    lActiveWindow = LowestSlot(true);
  }
}

void UpdateWindowCaptions() {
  const bool bNumbered = WindowCount() > 1;
  for (std::int32_t lSlot = 0; lSlot < MAX_WINDOWS; ++lSlot) {
    if (IsOccupied(lSlot)) {
      const std::string& sCaption = asWindowCaption[Slot(lSlot)];
      afrmWindow[Slot(lSlot)]->WindowForm().SetCaption(
          bNumbered ? sCaption + " - Window " + std::to_string(lSlot + 1) : sCaption);
    }
  }
}

void UpdateWindowMenu(Window& frm) {
  platform::Form& frmForm = frm.WindowForm();
  const auto [iSeparator, iItem] = frm.WindowMenuNumbers();
  const bool bSeveral = WindowCount() >= 2;
  frmForm.SetMenuVisible(iItem, 0, false);
  frmForm.SetMenuVisible(iSeparator, 0, bSeveral);
  for (std::int16_t iSlot = 1; iSlot < MAX_WINDOWS; ++iSlot) {
    frmForm.UnloadMenuItem(iItem, iSlot);
  }
  if (!bSeveral) {
    return;
  }
  for (std::int16_t iSlot = 0; iSlot < MAX_WINDOWS; ++iSlot) {
    if (IsOccupied(iSlot)) {
      if (iSlot > 0) {
        frmForm.LoadMenuItem(iItem, iSlot);
      }
      frmForm.SetMenuCaption(iItem, iSlot, afrmWindow[Slot(iSlot)]->WindowForm().Caption());
      frmForm.SetMenuChecked(iItem, iSlot, iSlot == lActiveWindow);
      frmForm.SetMenuVisible(iItem, iSlot, true);
    }
  }
}

void UpdateWindowMenus() {
  for (std::int32_t lSlot = 0; lSlot < MAX_WINDOWS; ++lSlot) {
    if (IsOccupied(lSlot)) {
      IgnoringErrors([=] { UpdateWindowMenu(*afrmWindow[Slot(lSlot)]); });
    }
  }
}

void RefreshWindows() {
  FixCurrentWindow();
  IgnoringErrors(UpdateWindowCaptions);
  UpdateWindowMenus();
}

void BringWindowToFront(Window& frm) {
  platform::Form& frmForm = frm.WindowForm();
  if (frmForm.State() == platform::WindowState::Minimized) {
    frmForm.SetState(platform::WindowState::Normal);
  }
  frmForm.Show();
  // A window that becomes active for the first time lists, and lets events run: it may be closed.
  if (FindWindowSlot(&frm) >= 0) {
    frmForm.BringToTop();
    frmForm.SetFocus();
  }
}

}  // namespace

bool RegisterWindow(Window* frm) {
  InitWindowTable();
  if (frm == nullptr) {
    return false;
  }
  if (FindWindowSlot(frm) >= 0) {
    return true;
  }
  const std::int32_t lSlot = FreeWindowSlot();
  if (lSlot < 0) {
    return false;
  }
  afrmWindow[Slot(lSlot)] = frm;
  asWindowCaption[Slot(lSlot)] = frm->WindowForm().Caption();
  alWindowNo[Slot(lSlot)] = lSlot;
  lActiveWindow = lSlot;
  RefreshWindows();
  return true;
}

void UnregisterWindow(Window* frm) {
  InitWindowTable();
  const std::int32_t lSlot = FindWindowSlot(frm);
  if (lSlot < 0) {
    return;
  }
  alWindowNo[Slot(lSlot)] = -1;
  afrmWindow[Slot(lSlot)] = nullptr;
  asWindowCaption[Slot(lSlot)].clear();
  if (lActiveWindow == lSlot) {
    lActiveWindow = -1;
  }
  RefreshWindows();
}

void WindowActivated(Window* frm) {
  InitWindowTable();
  if (const std::int32_t lSlot = FindWindowSlot(frm); lSlot >= 0) {
    lActiveWindow = lSlot;
  }
  UpdateWindowMenus();
}

void ActivateWindowSlot(std::int16_t iIndex) {
  InitWindowTable();
  if (!IsOccupied(iIndex)) {
    return;
  }
  lActiveWindow = iIndex;
  IgnoringErrors([=] { BringWindowToFront(*afrmWindow[Slot(iIndex)]); });
  UpdateWindowMenus();
}

bool OpenNewWindow(Window* frm, std::int32_t lDx, std::int32_t lDy) {
  InitWindowTable();
  if (frm == nullptr || WindowCount() == MAX_WINDOWS) {
    return false;
  }
  std::shared_ptr<Window> frmNew;
  try {
    const platform::FormPlace tCaller = frm->WindowForm().Place();
    frmNew = frm->LoadNewInstance();
    frmNew->WindowForm().Show();
    // Showing lets events run; the user may have closed the window again.
    if (FindWindowSlot(frmNew.get()) >= 0) {
      frmNew->WindowForm().SetLeft(tCaller.dLeft + lDx);
      frmNew->WindowForm().SetTop(tCaller.dTop + lDy);
      IgnoringErrors([&] { BringWindowToFront(*frmNew); });
    }
    return true;
  } catch (const std::exception&) {
    if (FindWindowSlot(frmNew.get()) >= 0) {
      frmNew->WindowForm().Unload();
    }
    return false;
  }
}

std::int32_t WindowCount() {
  InitWindowTable();
  return static_cast<std::int32_t>(
      std::ranges::count_if(alWindowNo, [](std::int32_t lNo) { return lNo != -1; }));
}

bool IsPrimaryWindow(const Window* frm) {
  InitWindowTable();
  const std::int32_t lSlot = FindWindowSlot(frm);
  return lSlot >= 0 && lSlot == LowestSlot(true);
}

}  // namespace modALLForms
