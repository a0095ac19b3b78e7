#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "disass/modDISListFollow.h"
#include "disass/modDISListing.h"
#include "platform/Toolkit.h"
#include "util/modALLHook.h"
#include "windows/modALLForms.h"

/// The disassembler window: one instance a window, each with its own range, listing and editor.
///
/// All windows share the process-wide link to the emulator, which the first one sets up and the
/// last one releases, and the decoder's memory image. Handlers run on the one user-interface
/// thread, but any message box, dialog, pop-up menu and every line of a listing lets others run in
/// between: after each of these a handler asks bUnloaded, and whatever else it relies on, again.
class frmDisass final : public platform::FormEvents,
                        public modALLForms::Window,
                        public modALLHook::ActivityTarget,
                        public modDISListFollow::FollowingWindow,
                        public std::enable_shared_from_this<frmDisass> {
 public:
  /// Whether windows offer the self-check of decoder and assembler (cmdDebug).
  static constexpr bool DEBUG_SWITCH = false;

  /// Loads a window, unseen. Ends the program when the link to the emulator cannot be set up.
  /// @param bDebug  offers the self-check in this window
  static std::shared_ptr<frmDisass> LoadNew(bool bDebug = DEBUG_SWITCH);

  explicit frmDisass(bool bDebug) : bDebugOffered(bDebug) {}

  /// Lists lStartAddr to lEndAddr anew from a fresh copy of the emulated memory.
  void esegue_disass();

  /// Shows and selects the line of an address, listing from there when it is not shown.
  /// @param bForceDisass  lists the range in force again in any case
  /// @param lAddrToShow   an address; negative: the one that the emulator asks for. Above 65535:
  ///                      no address is shown
  void position(const bool& bForceDisass, std::int32_t lAddrToShow);

  /// Brings the listing up to date after another window has written iBytesChanged bytes at
  /// lAddrChanged.
  void DisassExternalRamChanged(std::int32_t lAddrChanged, std::int16_t iBytesChanged);

  /// Moves the editor to where its line stands now, or closes it when the line is out of view.
  void DisassEditFollowListScroll() override;

  /// Tells the emulator that the user works in this program.
  void do_UserActivity() override;

  platform::Form& WindowForm() override { return *frmForm; }
  modALLForms::WindowMenu WindowMenuNumbers() const override;
  std::shared_ptr<modALLForms::Window> LoadNewInstance() override;

  /// The listed lines and the address tables over them, for tests and measurements.
  const modDISListing::Listing& LinesAndMaps() const { return tListing; }

 private:
  // What the toolkit reports, handed to the handlers below.
  void Load(platform::Form& frmLoaded) override;
  void Activate() override { Form_Activate(); }
  void Resize() override { Form_Resize(); }
  void Timer() override { tmrEvent_Timer(); }
  void QueryUnload() override { Form_QueryUnload(); }
  void Click(std::int16_t iControl) override;
  void DblClick(std::int16_t iControl) override;
  void GotFocus(std::int16_t iControl) override;
  void LostFocus(std::int16_t iControl) override;
  bool KeyDown(std::int16_t iControl, std::int16_t iKeyCode) override;
  std::int32_t KeyPress(std::int16_t iControl, std::int32_t lCharacter) override;
  void MouseUp(std::int16_t iControl, std::int16_t iButton, std::int16_t iShift, double dX,
               double dY) override;
  void MenuClick(std::int16_t iMenu, std::int16_t iIndex) override;

  // Life: frmDisassLife.cpp.
  void Form_Load();
  void Form_Activate();
  void Form_Resize();
  void tmrEvent_Timer();
  void Form_QueryUnload();
  void cmdDisass_Click();
  void cmdDebug_Click();
  void mnuWindowOpen_Click();
  void SetUpLink();
  void ReleaseLink();

  // Address range: frmDisassRange.cpp.
  static std::int32_t AddressField_KeyPress(std::int32_t lCharacter);
  void txtStart_LostFocus();
  void txtEnd_LostFocus();
  bool TakeAddress(platform::TextBox& txtField, std::int32_t& lAddress) const;

  // Listing: frmDisassListing.cpp.
  void FillListing();
  void ShowLine(std::int32_t lIndex);
  void SelectQuietly(std::int32_t lIndex);
  void EnsureListIndexVisible(std::int32_t lIndex);
  double ListItemTwips() const;
  std::int32_t GetListItemHeight() const;
  std::int32_t VisibleLines() const;
  void DropListing();
  bool RefreshFromChange(std::int32_t lAddrChanged, std::int32_t lBytesChanged);

  // In-place editor: frmDisassEditor.cpp.
  bool EditorOpen() const { return txtAsm->Visible(); }
  void OpenAsmEditor();
  platform::TwipsRect EditorPlace(std::int32_t lLine) const;
  void CloseAsmEditor(bool bFocusList);
  void MoveAsmEditor(std::int32_t lDelta);
  void EditAtAddress(std::int32_t lAddress);
  void AssembleAndWrite();
  bool ConfirmWrite(std::int32_t lAddress, std::int32_t lNew, std::int32_t lCurrent);
  void ReturnToEditor();
  void NotifyOtherWindows(std::int32_t lAddress, std::int16_t iCount);
  bool RangeHasProtectedByte(std::int32_t lAddress, std::int32_t lCount);
  void LoadProtectionMap();
  std::int32_t GetListTextWidth(std::string_view sText) const;
  bool txtAsm_KeyDown(std::int16_t iKeyCode);
  static std::int32_t txtAsm_KeyPress(std::int32_t lCharacter);

  // Navigation: frmDisassNavigation.cpp.
  void lstDis_Click();
  void lstDis_DblClick();
  std::int32_t lstDis_KeyPress(std::int32_t lCharacter);
  bool lstDis_KeyDown(std::int16_t iKeyCode);
  void OpenPopup(std::int32_t lLine, std::optional<platform::TwipsPoint> tAt);
  void lstDis_MouseUp(std::int16_t iButton, double dX, double dY);
  std::int32_t ListIndexFromPoint(double dX, double dY) const;
  void mnuSetBreakpoint_Click();

  // Saving: frmDisassSaving.cpp.
  void mnuSave_Click();

  // The form and its controls, from load on.
  platform::Form* frmForm = nullptr;
  platform::TextBox* txtStart = nullptr;
  platform::TextBox* txtEnd = nullptr;
  platform::Control* cmdDisass = nullptr;
  platform::CheckBox* chkAllow = nullptr;
  platform::CheckBox* chkLong = nullptr;
  platform::Control* cmdDebug = nullptr;
  platform::ListBox* lstDis = nullptr;
  platform::TextBox* txtAsm = nullptr;

  const bool bDebugOffered;
  bool bActivated = false;  // the window has had its first activation
  bool bUnloaded = false;   // Form_QueryUnload has begun: nothing may be shown or asked any more
  bool bInDisass = false;   // inside esegue_disass
  bool bListSelecting = false;  // the window itself moves the selection

  std::int32_t lStartAddr = 0;
  std::int32_t lEndAddr = 0;
  modDISListing::Listing tListing;

  std::int32_t lMenuAddr = -1;  // the line that the pop-up menu is open on; -1: it is not open
  std::int32_t lEditAddr = 0;   // the line under the editor
  std::array<std::uint8_t, modALLUtility::ADDRESS_SPACE> bProtMap{};  // non-zero: protected
};
