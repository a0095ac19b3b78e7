#pragma once

#include <array>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include "platform/Toolkit.h"
#include "platform/win32/WinControls.h"
#include "platform/win32/WinMenus.h"
#include "platform/win32/WinMetrics.h"
#include "platform/win32/WinToolkit.h"

namespace platform::win32 {

/// A form: a top-level window with its controls.
class WinForm final : public FormCore {
 public:
  WinForm(WinToolkit& tItsToolkit, const FormDesign& tDesign, std::shared_ptr<FormEvents> pLogic);
  ~WinForm() override;
  WinForm(const WinForm&) = delete;
  WinForm& operator=(const WinForm&) = delete;

  std::string Caption() const override;
  void SetCaption(std::string_view sCaption) override;
  WindowState State() const override;
  void SetState(WindowState eState) override;
  void Show() override;
  void BringToTop() override;
  void SetFocus() override;
  void SetMousePointer(MousePointer ePointer) override;
  double TextHeight(std::string_view sText) const override;
  void SetTimerEnabled(bool bEnabled) override;
  void SetIcon(IconKind eKind, std::uint32_t hIcon) override;
  void LoadMenuItem(std::int16_t iMenu, std::int16_t iIndex) override;
  void UnloadMenuItem(std::int16_t iMenu, std::int16_t iIndex) override;
  void SetMenuCaption(std::int16_t iMenu, std::int16_t iIndex, std::string_view sCaption) override;
  void SetMenuChecked(std::int16_t iMenu, std::int16_t iIndex, bool bChecked) override;
  void SetMenuVisible(std::int16_t iMenu, std::int16_t iIndex, bool bVisible) override;
  void ShowPopupMenu(std::int16_t iMenu, std::optional<TwipsPoint> tAt) override;
  FileDialogResult ShowFileDialog(const FileDialogRequest& tRequest) override;

  HWND Window() const { return hWnd; }

  // What follows is for the form's controls.

  /// Does what the design has a pressed key do wherever the focus is; false: nothing.
  bool RunDesignedKey(WPARAM wKey);
  /// Gives a control the keyboard focus, at once or when the form becomes active.
  void FocusOn(const ControlWindow& tControl);
  /// Has the next control in the tab order take the focus over, if any can.
  void FocusNext(const ControlWindow& tControl, bool bBackward);
  /// Takes the focus, without a LostFocus, from a control that is about to be disabled or hidden,
  /// unless it has none.
  void YieldFocus(const ControlWindow& tControl);
  /// Tells that a control has the focus now; raises the focus events when that is a change. One
  /// that the program moved while it was away, as in a message box, was lost by nobody.
  void FocusArrived(const ControlWindow& tControl);

 private:
  struct IconDestroyer {
    void operator()(HICON hIcon) const { ::DestroyIcon(hIcon); }
  };
  using OwnedIcon = std::unique_ptr<std::remove_pointer_t<HICON>, IconDestroyer>;

  static LRESULT CALLBACK Received(HWND hWnd, UINT uMsg, WPARAM wParam, LPARAM lParam);
  LRESULT OnMessage(UINT uMsg, WPARAM wParam, LPARAM lParam);
  void OnCommand(WPARAM wParam, LPARAM lParam);
  void ReportMenuClick(WORD iCommand);
  void LimitTracking(MINMAXINFO& tLimits) const;
  bool OnWheel(WPARAM wParam, LPARAM lParam);
  ControlWindow* ControlAt(WORD iControl) const;
  PixelPlace OuterPlace() const override;
  void SetOuterPlace(const PixelPlace& tPlace) override;
  Size InnerPixels() const override;
  void Vanish() override;
  void RestoreFocus();
  void CloseDialogs();

  WinToolkit& tToolkit;
  Size tSmallest;
  std::int32_t lGreatestWidth;
  UINT lTimerInterval;
  WinMenus tMenus;
  std::vector<std::pair<KeyDesign, ControlWindow*>> atButtonKey;
  OwnedFont hFont;
  OwnedFont hListingFont;
  HWND hWnd = nullptr;
  std::vector<ControlWindow*> apControl;
  std::vector<ControlWindow*> apTabOrder;
  const ControlWindow* pFocused = nullptr;        // had the focus last
  const ControlWindow* pWanted = nullptr;         // is to have it when the form becomes active
  WindowState eFirstState = WindowState::Normal;  // until the form is shown
  bool bHourglass = false;
  bool bPassingWheel = false;
  bool bSizing = false;        // the user is
  bool bTimerEnabled = false;  // what the timer posted before it was stopped still comes
  std::array<OwnedIcon, 2> ahIcon;
};

}  // namespace platform::win32
