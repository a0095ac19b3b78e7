#pragma once

#include <array>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "platform/Toolkit.h"
#include "platform/win32/WinControls.h"
#include "platform/win32/WinMenus.h"
#include "platform/win32/WinMetrics.h"
#include "platform/win32/WinToolkit.h"

namespace platform::win32 {

/// A form: a top-level window with its controls.
///
/// Every event reaches the form's logic through Deliver. An unloaded form stays as a hidden window
/// whose methods do no harm, until its logic is gone and nothing of the form is on the stack.
class WinForm final : public Form, public std::enable_shared_from_this<WinForm> {
 public:
  WinForm(WinToolkit& tItsToolkit, const FormDesign& tDesign, std::shared_ptr<FormEvents> pLogic);
  ~WinForm() override;
  WinForm(const WinForm&) = delete;
  WinForm& operator=(const WinForm&) = delete;

  Control& ControlOf(std::int16_t iControl) override { return *colControl.at(iControl); }
  TextBox& TextBoxOf(std::int16_t iControl) override;
  CheckBox& CheckBoxOf(std::int16_t iControl) override;
  ListBox& ListBoxOf(std::int16_t iControl) override;
  std::string Name() const override { return sName; }
  std::string Caption() const override;
  void SetCaption(std::string_view sCaption) override;
  FormPlace Place() const override;
  void SetTop(double dTop) override;
  void SetLeft(double dLeft) override;
  void SetHeight(double dHeight) override;
  void SetWidth(double dWidth) override;
  Size InnerSize() const override;
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
  void ShowPopupMenu(std::int16_t iMenu) override;
  FileDialogResult ShowFileDialog(const FileDialogRequest& tRequest) override;
  void Unload() override;

  void Load();  ///< raises the Load event
  bool IsUnloaded() const { return eLife == Life::Unloaded; }
  HWND Window() const { return hWnd; }
  const std::shared_ptr<FormEvents>& Logic() const { return pEvents; }

  /// The one way of every event to the form's logic: gives what fnCall gives, or the result type's
  /// default when the form is closing. Form and logic stay alive until it returns.
  template <class Call>
  auto Deliver(Call&& fnCall) {
    using Result = std::invoke_result_t<Call, FormEvents&>;
    if (eLife != Life::Loaded) return Result();
    const Delivery tDelivery(*this);
    return std::forward<Call>(fnCall)(*tDelivery.pLogic);
  }

  /// A modal message box over this form, or over no window while the form is unseen.
  std::int32_t RunMessageBox(const std::string& sPrompt, std::int32_t lStyle,
                             const std::string& sTitle);

  // What follows is for the form's controls.

  /// Gives a control the keyboard focus, at once or when the form becomes active.
  void FocusOn(const ControlWindow& tControl);
  /// Has the next control in the tab order take the focus over, if any can.
  void FocusNext(const ControlWindow& tControl, bool bBackward);
  bool IsFocused(const ControlWindow& tControl) const;  ///< has it, or gets it back
  /// Tells that a control has the focus now; raises the focus events when that is a change. One
  /// that the program moved while it was away, as in a message box, was lost by nobody.
  void FocusArrived(const ControlWindow& tControl);

 private:
  enum class Life : std::uint8_t { Loaded, Unloading, Unloaded };

  /// What holds while an event is handled: form and logic live, and message boxes know their owner.
  struct Delivery {
    explicit Delivery(WinForm& frm);
    ~Delivery();
    Delivery(const Delivery&) = delete;
    Delivery& operator=(const Delivery&) = delete;
    std::shared_ptr<WinForm> pForm;
    std::shared_ptr<FormEvents> pLogic;
    WinForm* pPrevious;
  };

  struct IconDestroyer {
    void operator()(HICON hIcon) const { ::DestroyIcon(hIcon); }
  };
  using OwnedIcon = std::unique_ptr<std::remove_pointer_t<HICON>, IconDestroyer>;

  static LRESULT CALLBACK Received(HWND hWnd, UINT uMsg, WPARAM wParam, LPARAM lParam);
  LRESULT OnMessage(UINT uMsg, WPARAM wParam, LPARAM lParam);
  void OnCommand(WPARAM wParam, LPARAM lParam);
  bool OnWheel(WPARAM wParam, LPARAM lParam);
  ControlWindow* ControlAt(WORD iControl) const;
  void ReportResize();
  void SetOuterPlace(const RECT& tPlace);
  RECT OuterPlace() const;
  void RestoreFocus();
  void CloseDialogs();

  WinToolkit& tToolkit;
  std::shared_ptr<FormEvents> pEvents;
  std::string sName;
  UINT lTimerInterval;
  WinMenus tMenus;
  OwnedFont hFont;
  OwnedFont hListingFont;
  HWND hWnd = nullptr;
  std::map<std::int16_t, std::unique_ptr<ControlWindow>> colControl;
  std::vector<ControlWindow*> apTabOrder;
  const ControlWindow* pFocused = nullptr;  // had the focus last
  const ControlWindow* pWanted = nullptr;   // is to have it when the form becomes active
  Life eLife = Life::Loaded;
  bool bLoadReturned = false;
  bool bShown = false;
  WindowState eFirstState = WindowState::Normal;  // until the form is shown
  bool bHourglass = false;
  bool bPassingWheel = false;
  bool bFileDialogOpen = false;
  std::optional<std::pair<std::pair<LONG, LONG>, WindowState>> tReportedSize;
  std::array<OwnedIcon, 2> ahIcon;
};

}  // namespace platform::win32
