#pragma once

#include <memory>
#include <string>

#include "platform/Toolkit.h"
#include "platform/win32/WinHeaders.h"

namespace platform::win32 {

class WinForm;

/// What a Windows control is created with.
struct ControlClass {
  const char* sClass;
  DWORD lStyle;
  DWORD lExtendedStyle;
};

/// What all controls have: a Windows control of a system class, whose keys and focus changes go to
/// the form's logic before the control acts on them. The form's window owns the control's.
class ControlWindow : public virtual Control {
 public:
  ControlWindow(WinForm& frmOwner, const ControlDesign& tDesign, const ControlClass& tClass,
                HFONT hFont);
  ControlWindow(const ControlWindow&) = delete;
  ControlWindow& operator=(const ControlWindow&) = delete;

  void SetEnabled(bool bEnabled) override;
  bool Enabled() const override;
  void SetVisible(bool bVisible) override;
  bool Visible() const override;
  void SetFocus() override;
  void Move(const TwipsRect& tNewPlace) override;
  TwipsRect Place() const override { return tPlace; }
  void BringToFront() override;

  HWND Handle() const { return hWnd; }
  std::int16_t Number() const { return iControl; }
  bool TakesFocus() const { return bFocusable && Visible() && Enabled(); }

  /// A notification code of the control's class, as WM_COMMAND carries it.
  virtual void Notified(WORD /*iCode*/) {}

  /// The brush behind an edit control's text, with the text's colours set; nullptr: the system's.
  virtual HBRUSH Background(HDC /*hSurface*/) const { return nullptr; }

 protected:
  /// A message that is the control's own; by default the system class answers it.
  virtual LRESULT OnMessage(UINT uMsg, WPARAM wParam, LPARAM lParam);

  /// Sets how far the window reaches beyond the control's place to the left and to the top.
  void SetOutset(POINT tNewOutset);

  void Report(void (FormEvents::*fnEvent)(std::int16_t iControl));

  WinForm& frm;

 private:
  static LRESULT CALLBACK Received(HWND hWnd, UINT uMsg, WPARAM wParam, LPARAM lParam,
                                   UINT_PTR lSubclass, DWORD_PTR pControl);
  bool ReportKeyDown(WPARAM wKey);  // true: consumed
  LRESULT OnKeyDown(WPARAM wKey, LPARAM lParam);
  LRESULT OnCharacter(WPARAM wCharacter, LPARAM lParam);
  bool IsButton() const { return eKind == ControlKind::Button; }

  std::int16_t iControl;
  ControlKind eKind;
  bool bFocusable;
  TwipsRect tPlace;
  POINT tOutset{};
  HWND hWnd;
};

/// Builds a control into a form.
/// @param hListingFont  the font of a control whose design asks for it
std::unique_ptr<ControlWindow> BuildControl(WinForm& frm, const ControlDesign& tDesign, HFONT hFont,
                                            HFONT hListingFont);

}  // namespace platform::win32
