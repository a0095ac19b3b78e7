// The window's life: load, activation, resize, timer and unload, and with the first and the last
// window the link to the emulator.

#include <algorithm>

#include "config/modALLProcessError.h"
#include "config/modAllIni.h"
#include "disass/frmDisass.h"
#include "disass/frmDisassDesign.h"
#include "disass/modDISDebugCheck.h"
#include "link/modALLProcessEvents.h"
#include "link/modALLSharedMap.h"
#include "platform/NamedEvent.h"
#include "util/modALLUtilityDialogs.h"
#include "util/modALLUtilityMessages.h"
#include "windows/modALLProcessPlacement.h"

using modALLSharedMap::ControlField;

namespace {

constexpr std::int32_t NEW_WINDOW_OFFSET = 300;  // twips
constexpr std::int32_t LINK_FAILED = 1;          // exit status

}  // namespace

void frmDisass::Form_Load() {
  bActivated = false;
  frmForm->SetTop(frmDisassDesign::WINDOW_TOP);
  frmForm->SetLeft(frmDisassDesign::WINDOW_LEFT);
  frmForm->SetHeight(frmDisassDesign::WINDOW_HEIGHT);
  frmForm->SetWidth(frmDisassDesign::WINDOW_WIDTH);
  if (!bDebugOffered) {
    cmdDebug->SetVisible(false);
  }
  modALLProcess::RestoreWindowPlacement(modALLProcess::PROGRAM_NUMBER, *frmForm);
  frmForm->SetState(platform::WindowState::Normal);
  modALLSharedMap::ReadConfigTempFile();
  modALLUtility::SetFormIcon(frmForm);
  if (!modALLForms::RegisterWindow(this)) {
    modALLUtility::ShowMessage("Maximum number of windows reached", modALLUtility::MSG_EXCLAMATION,
                               modALLUtility::TITLE_ERROR);
    frmForm->Unload();
    return;
  }
  if (modALLForms::WindowCount() == 1) {
    SetUpLink();
  }
  frmForm->SetTimerEnabled(true);
  bListSelecting = false;
  lStartAddr = 0;
  lEndAddr = 0;
  tListing.Clear(lStartAddr, lEndAddr);
  txtAsm->SetVisible(false);
  modALLHook::InstallActivityHook(shared_from_this());
}

void frmDisass::SetUpLink() {
  using namespace modALLProcess;
  const auto fnCreate = [](std::uint32_t& hEvent, const std::string& sName) {
    hEvent = CreateNamedEvent(sName);
    // Only signals given from now on count.
    platform::ResetNamedEvent(hEvent);
  };
  try {
    fnCreate(tProgramEvent[PROGRAM_NUMBER].hEvent, tProgramEvent[PROGRAM_NUMBER].sName);
    fnCreate(hShowAddrEvent, sShowAddrEventName);
    fnCreate(hBreakpointEvent, sBreakpointEventName);
  } catch (const RuntimeError& tError) {
    modALLUtility::ShowMessage(tError.what(), modALLUtility::MSG_CRITICAL,
                               modALLUtility::TITLE_ERROR);
    platform::TheToolkit().EndProgram(LINK_FAILED);
  }
  if (!modALLSharedMap::SharedMapOpen(modALLSharedMap::RAM_BLOCK, false) ||
      !modALLSharedMap::SharedMapOpen(modALLSharedMap::CONTROL_BLOCK, false)) {
    platform::TheToolkit().EndProgram(LINK_FAILED);
  }
}

void frmDisass::Form_Activate() {
  modALLForms::WindowActivated(this);
  modALLHook::InstallActivityHook(shared_from_this());
  if (!bActivated) {
    bActivated = true;
    frmForm->SetState(platform::WindowState::Normal);
    if (modALLProcess::CaptureWindowPlacement(modALLProcess::PROGRAM_NUMBER, *frmForm)) {
      modALLProcess::SaveWindowPlacement(modALLProcess::PROGRAM_NUMBER, "windowstate", false);
    }
    position(false, -1);
  }
}

void frmDisass::Form_Resize() {
  if (EditorOpen()) {
    CloseAsmEditor(true);
  }
  if (frmForm->State() == platform::WindowState::Normal &&
      frmForm->Place().dWidth > frmDisassDesign::WINDOW_WIDTH) {
    frmForm->SetWidth(frmDisassDesign::WINDOW_WIDTH);
  }
  if (frmForm->State() != platform::WindowState::Minimized) {
    const platform::Size tInner = frmForm->InnerSize();
    platform::TwipsRect tPlace = lstDis->Place();
    tPlace.lWidth = std::max(tInner.lWidth - 2 * tPlace.lLeft, 0);
    tPlace.lHeight = std::max(tInner.lHeight - tPlace.lTop - tPlace.lLeft, 0);
    lstDis->Move(tPlace);
  }
}

void frmDisass::tmrEvent_Timer() {
  if (modALLForms::IsPrimaryWindow(this) &&
      platform::WaitNamedEvent(modALLProcess::hShowAddrEvent)) {
    if (EditorOpen()) {
      CloseAsmEditor(false);
    }
    position(false, -1);
    return;
  }
  if (EditorOpen()) {
    DisassEditFollowListScroll();
  }
}

void frmDisass::Form_QueryUnload() {
  bUnloaded = true;
  if (lstDis != nullptr) {  // else the load broke off at once
    modDISListFollow::StopListFollow(lstDis->WindowHandle());
    lstDis->SetLines(nullptr);
  }
  modALLForms::UnregisterWindow(this);
  // A refused window comes here last, too, when all others were closed over its message: releasing
  // the link again does nothing.
  if (modALLForms::WindowCount() == 0) {
    ReleaseLink();
  }
  if (modALLProcess::CaptureWindowPlacement(modALLProcess::PROGRAM_NUMBER, *frmForm)) {
    modALLProcess::SaveWindowPlacement(modALLProcess::PROGRAM_NUMBER, "", false);
  }
  modAllIni::IniFlush();
}

void frmDisass::ReleaseLink() {
  using namespace modALLProcess;
  modALLHook::RemoveActivityHook();
  modALLSharedMap::WriteControlField(ControlField::ActiveProgram, 0);
  SignalEvent(tProgramEvent[PROGRAM_NUMBER].hEvent);
  modALLSharedMap::SharedMapClose(modALLSharedMap::RAM_BLOCK);
  modALLSharedMap::SharedMapClose(modALLSharedMap::CONTROL_BLOCK);
  CloseHandleAndClear(tProgramEvent[PROGRAM_NUMBER].hEvent);
  CloseHandleAndClear(hShowAddrEvent);
  CloseHandleAndClear(hBreakpointEvent);
}

void frmDisass::cmdDisass_Click() { position(true, -1); }

void frmDisass::cmdDebug_Click() {
  cmdDebug->SetEnabled(false);
  modDISDebug::DISDebug_CheckAssembler([this] { return !bUnloaded; });
  if (!bUnloaded) {
    cmdDebug->SetEnabled(true);
  }
}

void frmDisass::mnuWindowOpen_Click() {
  if (!modALLForms::OpenNewWindow(this, NEW_WINDOW_OFFSET, NEW_WINDOW_OFFSET)) {
    modALLUtility::ShowMessage("Unable to open a new window", modALLUtility::MSG_EXCLAMATION,
                               modALLUtility::TITLE_ERROR);
  }
}

void frmDisass::do_UserActivity() {
  modALLSharedMap::WriteControlField(ControlField::ActiveProgram, modALLProcess::PROGRAM_NUMBER);
}
