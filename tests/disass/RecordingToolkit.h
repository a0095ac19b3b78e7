#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <filesystem>
#include <functional>
#include <map>

#include "platform/Toolkit.h"

/// A toolkit without a screen. It writes down the calls whose order matters, plays the user, and
/// runs a test's code at the worst moment: while a message box, a dialog or a pop-up menu is open,
/// or in the middle of a listing. A form that is used after its end fails the test.
namespace recording {

using platform::FormEvents, platform::IconKind, platform::TwipsRect, platform::WindowProc;
using std::int16_t, std::int32_t, std::uint32_t, std::uint8_t, std::intptr_t, std::uintptr_t;
using std::string, std::string_view, std::to_string, std::shared_ptr, std::exchange, std::size_t;
using Action = std::function<void()>;

/// A message box's prompt, style and title.
using Box = std::tuple<string, int32_t, string>;

struct MenuItem {
  string sCaption;
  bool bVisible = false, bChecked = false;
};

class Form;

/// What a test scripts, and what it reads afterwards.
struct Script {
  /// Answers the next message box, after running fnMeanwhile; one without an answer fails the test.
  void Answer(int32_t lResult, Action fnMeanwhile = {}) {
    atAnswer.emplace_back(lResult, std::move(fnMeanwhile));
  }
  /// Runs fnEvent at the lNth next yield.
  void AtDoEvents(int32_t lNth, Action fnEvent) { colAtYield[lYields + lNth] = std::move(fnEvent); }
  std::vector<Box> TakeBoxes() { return exchange(atBox, {}); }
  std::vector<string> TakeLog() { return exchange(asLog, {}); }

  std::deque<std::pair<int32_t, Action>> atAnswer;
  platform::FileDialogResult tChosen;  ///< how file dialogs end
  string sDialogAsked;                 ///< what the last one was asked for
  Action fnDuring = [] {};             ///< runs while a file dialog or pop-up menu is open
  platform::Size tScreen{20000, 15000};
  Form* pActive = nullptr;
  bool bEndingProgram = false;
  std::vector<shared_ptr<Form>> apForm;      ///< the loaded ones, oldest first
  std::vector<shared_ptr<Form>> apGone;      ///< kept, so that use after the end is seen
  std::vector<shared_ptr<Form>> apHandling;  ///< whose events are handled, innermost last
  platform::MouseProc fnMouseProc = nullptr;
  std::map<uint32_t, WindowProc> colProc, colProp;  ///< of the lists that are subclassed
  std::vector<Box> atBox;
  std::vector<string> asLog;
  std::map<int32_t, Action> colAtYield;
  int32_t lYields = 0;
  uint32_t hLastWindow = 0;
};

class Form final : public platform::Form, public std::enable_shared_from_this<Form> {
 public:
  /// A control of every kind at once.
  class Control final : public platform::TextBox,
                        public platform::CheckBox,
                        public platform::ListBox {
   public:
    Control(Form& frmOwner, const platform::ControlDesign& tIts)
        : tDesign(tIts), bVisible(tIts.bVisible), tPlace(tIts.tPlace), frm(frmOwner) {}
    void SetEnabled(bool bNew) override { Use(bEnabled, bNew, bNew ? "enable " : "disable "); }
    bool Enabled() const override { return bEnabled; }
    void SetVisible(bool bNew) override { Use(bVisible, bNew, bNew ? "show " : "hide "); }
    bool Visible() const override { return frm.CheckAlive(), bVisible; }
    void SetFocus() override { Note("focus "), frm.MoveFocus(Usable() ? this : frm.pFocus); }
    void Move(const TwipsRect& tNew) override { frm.CheckAlive(), tPlace = tNew; }
    TwipsRect Place() const override { return tPlace; }
    void BringToFront() override {}
    string Text() const override { return frm.CheckAlive(), sText; }
    void SetText(string_view sNew) override {
      sText = sNew.substr(0, static_cast<size_t>(tDesign.iMaxLength));
      bAllSelected = false;
    }
    void SelectAll() override { frm.CheckAlive(), bAllSelected = true; }
    void SetAccessibleName(string_view /*sName*/) override { frm.CheckAlive(); }
    bool Checked() const override { return bChecked; }
    void SetLines(const platform::ListLines* pNew) override {
      Note(pNew != nullptr ? "fill " : "clear ");
      pLines = pNew;
      asShown.clear();
      if (pNew != nullptr) LinesReplaced(0, 0, pNew->LineCount());
      lSelected = -1;
      lTop = 0;
    }
    void LinesReplaced(int32_t lFirst, int32_t lRemoved, int32_t lInserted) override {
      frm.CheckAlive();
      const auto itRest =
          asShown.erase(asShown.begin() + lFirst, asShown.begin() + lFirst + lRemoved);
      auto itNew = asShown.insert(itRest, static_cast<size_t>(lInserted), "");
      for (int32_t lLine = 0; lLine < lInserted; ++lLine) *itNew++ = pLines->Line(lFirst + lLine);
      for (int32_t* const plLine : {&lSelected, &lTop}) {
        const bool bReplaced = *plLine >= lFirst && *plLine < lFirst + lRemoved;
        if (*plLine >= lFirst + lRemoved) *plLine += lInserted - lRemoved;
        if (bReplaced) *plLine = std::min(*plLine, lFirst + lInserted - 1);
      }
    }
    int32_t SelectedIndex() const override { return frm.CheckAlive(), lSelected; }
    void SetSelectedIndex(int32_t lIndex) override {
      Note("select in ");
      lSelected = lIndex < Lines() ? lIndex : -1;
      if (lSelected >= 0) frm.Deliver(&FormEvents::Click, tDesign.iControl);
    }
    int32_t TopIndex() const override { return lTop; }
    void SetTopIndex(int32_t lIndex) override {
      lTop = std::clamp(lIndex, 0, std::max(Lines() - tPlace.lHeight / 225, 0));
    }
    int32_t LeftOffset() const override { return lLeftOffset; }
    void ScrollToLeft() override { lLeftOffset = 0; }
    int32_t InnerHeight() const override { return tPlace.lHeight; }
    int32_t ItemHeightPixels() const override { return lItemPixels; }
    uint32_t ItemFromPoint(int32_t lXPixels, int32_t lYPixels) const override {
      const int32_t lRow = lTop + lYPixels / lItemPixels;
      return lRow >= Lines() || lXPixels * 15 > tPlace.lWidth ? 0x10000U
                                                              : static_cast<uint32_t>(lRow);
    }
    double TextWidth(string_view sOf) const override {
      return 105.4 * static_cast<double>(sOf.size());
    }
    uint32_t WindowHandle() const override { return frm.CheckAlive(), hWindow; }

    bool Usable() const { return bEnabled && bVisible; }
    int32_t Lines() const { return static_cast<int32_t>(asShown.size()); }

    const platform::ControlDesign tDesign;
    bool bEnabled = true, bVisible, bChecked = false, bAllSelected = false;
    TwipsRect tPlace;
    string sText;
    std::vector<string> asShown;  ///< the lines as a view has them that only hears of changes
    int32_t lItemPixels = 15, lSelected = -1, lTop = 0, lLeftOffset = 0;

   private:
    void Note(const char* sCall) const { frm.Note(sCall + string(tDesign.sName)); }
    void Use(bool& bField, bool bNew, const char* sCall) {
      Note(sCall);
      bField = bNew;
      if (frm.pFocus == this && !Usable()) frm.pFocus = nullptr;
    }

    Form& frm;
    const uint32_t hWindow = ++frm.tScript.hLastWindow;
    const platform::ListLines* pLines = nullptr;
  };

  Form(Script& tIts, const platform::FormDesign& tDesign, shared_ptr<FormEvents> pItsLogic)
      : tScript(tIts), pLogic(std::move(pItsLogic)), sCaption(tDesign.sCaption) {
    for (const auto& tIt : tDesign.atControl) colControl.try_emplace(tIt.iControl, *this, tIt);
    for (const auto& tIt : tDesign.atMenu)
      colMenu[{tIt.iMenu, 0}] = {string(tIt.sCaption), tIt.bVisible};
  }
  Control& ControlOf(int16_t iControl) override { return CheckAlive(), colControl.at(iControl); }
  platform::TextBox& TextBoxOf(int16_t iControl) override { return ControlOf(iControl); }
  platform::CheckBox& CheckBoxOf(int16_t iControl) override { return ControlOf(iControl); }
  platform::ListBox& ListBoxOf(int16_t iControl) override { return ControlOf(iControl); }
  string Name() const override { return CheckAlive(), "frmDisass"; }
  string Caption() const override { return CheckAlive(), sCaption; }
  void SetCaption(string_view sNew) override { CheckAlive(), sCaption = sNew; }
  platform::FormPlace Place() const override { return CheckAlive(), tPlace; }
  void SetTop(double dNew) override { Set("top ", tPlace.dTop, dNew); }
  void SetLeft(double dNew) override { Set("left ", tPlace.dLeft, dNew); }
  void SetHeight(double dNew) override { Set("height ", tPlace.dHeight, dNew), Resized(); }
  void SetWidth(double dNew) override { Set("width ", tPlace.dWidth, dNew), Resized(); }
  platform::Size InnerSize() const override {
    return {static_cast<int32_t>(tPlace.dWidth) - 120, static_cast<int32_t>(tPlace.dHeight) - 900};
  }
  platform::WindowState State() const override { return CheckAlive(), eState; }
  void SetState(platform::WindowState eNew) override {
    Note("state " + to_string(static_cast<int>(eNew)));
    if (exchange(eState, eNew) != eNew) Resized();
  }
  void Show() override {
    if (!exchange(bShown, true)) Resized();
    SetFocus();
  }
  void BringToTop() override { Note("to top"); }
  void SetFocus() override {
    CheckAlive();
    if (!bClosing && exchange(tScript.pActive, this) != this) Deliver(&FormEvents::Activate);
  }
  void SetMousePointer(platform::MousePointer ePointer) override {
    Note(ePointer == platform::MousePointer::Hourglass ? "hourglass" : "pointer");
  }
  double TextHeight(string_view) const override { return 449.6; }
  void SetTimerEnabled(bool bNew) override { Note(bNew ? "timer on" : "timer off"), bTimer = bNew; }
  void SetIcon(IconKind eKind, uint32_t hIcon) override {
    Note("icon " + to_string(static_cast<int>(eKind)) + " is " + to_string(hIcon));
  }
  void LoadMenuItem(int16_t iMenu, int16_t iIndex) override { colMenu[{iMenu, iIndex}] = {}; }
  void UnloadMenuItem(int16_t iMenu, int16_t iIndex) override { colMenu.erase({iMenu, iIndex}); }
  void SetMenuCaption(int16_t iMenu, int16_t iIndex, string_view sNew) override {
    colMenu.at({iMenu, iIndex}).sCaption = sNew;
  }
  void SetMenuChecked(int16_t iMenu, int16_t iIndex, bool bNew) override {
    colMenu.at({iMenu, iIndex}).bChecked = bNew;
  }
  void SetMenuVisible(int16_t iMenu, int16_t iIndex, bool bNew) override {
    colMenu.at({iMenu, iIndex}).bVisible = bNew;
  }
  void ShowPopupMenu(int16_t iMenu, std::optional<platform::TwipsPoint> tAt) override {
    Note("pop-up " + colMenu.at({iMenu, 0}).sCaption);
    tPopupAt = tAt;
    exchange(tScript.fnDuring, [] {})();
  }
  platform::FileDialogResult ShowFileDialog(const platform::FileDialogRequest& tAsked) override {
    tScript.sDialogAsked = (tAsked.bSave ? "save " : "open ") + string(tAsked.sFilter) + ' ' +
                           to_string(tAsked.lFilterIndex) + ' ' + to_string(tAsked.lFlags) + ' ' +
                           to_string(tAsked.lMaxFileSize) + ' ' + string(tAsked.sFileName);
    exchange(tScript.fnDuring, [] {})();
    return tScript.tChosen;
  }
  void Unload() override {
    if (exchange(bClosing, true)) return;
    const shared_ptr<FormEvents> pEnding = pLogic;
    pEnding->QueryUnload();
    for (const auto& [iControl, tControl] : colControl) {
      EXPECT_FALSE(tScript.colProc.contains(tControl.WindowHandle())) << "still subclassed";
    }
    bGone = true;
    tScript.apGone.push_back(shared_from_this());
    std::erase(tScript.apForm, tScript.apGone.back());
    if (tScript.pActive == this) tScript.pActive = nullptr;
    pLogic.reset();
  }

  // What the user does. Clicks and keys reach only what is enabled and visible.
  bool GoTo(int16_t iControl) {
    if (!bGone) SetFocus();
    Control& tControl = colControl.at(iControl);
    if (!bGone) tControl.SetFocus();
    return pFocus == &tControl && !bGone;
  }
  void Press(int16_t iControl) {
    if (!GoTo(iControl)) return;
    colControl.at(iControl).bChecked ^= true;
    Deliver(&FormEvents::Click, iControl);
  }
  void DoubleClick(int16_t iControl, int32_t lLine) {
    if (GoTo(iControl)) colControl.at(iControl).SetSelectedIndex(lLine);
    Deliver(&FormEvents::DblClick, iControl);
  }
  void Click(int16_t iControl, int16_t iButton, double dX, double dY) {
    Deliver(&FormEvents::MouseUp, iControl, iButton, int16_t{0}, dX, dY);
  }
  void Key(int16_t iKeyCode) {
    if (pFocus != nullptr && !Deliver(&FormEvents::KeyDown, pFocus->tDesign.iControl, iKeyCode)) {
      Type(string(1, static_cast<char>(iKeyCode)));
    }
  }
  void Type(string_view sTyped) {
    for (const char bTyped : sTyped) {
      if (pFocus == nullptr) return;
      Control& tControl = *pFocus;
      const int32_t lTyped = static_cast<uint8_t>(bTyped);
      const auto lTaken = Deliver(&FormEvents::KeyPress, tControl.tDesign.iControl, lTyped);
      if (lTaken == 0 || tControl.tDesign.eKind != platform::ControlKind::TextBox) continue;
      tControl.SetText((tControl.bAllSelected ? "" : tControl.sText) + static_cast<char>(lTaken));
    }
  }
  void PickMenu(int16_t iMenu, int16_t iItem = 0) { Deliver(&FormEvents::MenuClick, iMenu, iItem); }
  void Tick() {  // the timer's interval is over
    if (bTimer) Deliver(&FormEvents::Timer);
  }

  template <typename Result, typename... Types, typename... Values>
  Result Deliver(Result (FormEvents::*fnEvent)(Types...), Values&&... tValue) {
    if (bClosing) return Result();
    const shared_ptr<FormEvents> pKept = pLogic;
    tScript.apHandling.push_back(shared_from_this());
    const shared_ptr<void> tPop(nullptr, [&](void*) { tScript.apHandling.pop_back(); });
    return (*pKept.*fnEvent)(std::forward<Values>(tValue)...);
  }
  void MoveFocus(Control* pTo) {
    Control* const pFrom = exchange(pFocus, pTo);
    if (pFrom != pTo && pFrom != nullptr) Deliver(&FormEvents::LostFocus, pFrom->tDesign.iControl);
    if (pTo != nullptr && pTo != pFrom && pFocus == pTo)
      Deliver(&FormEvents::GotFocus, pTo->tDesign.iControl);
  }
  void CheckAlive() const { EXPECT_FALSE(bGone) << "a form was used after its end"; }
  void Note(const string& sCall) const { CheckAlive(), tScript.asLog.push_back(sCall); }

  Script& tScript;
  shared_ptr<FormEvents> pLogic;
  std::optional<platform::TwipsPoint> tPopupAt;  ///< where the last pop-up menu was to be
  bool bGone = false, bTimer = false, bShown = false, bClosing = false;
  Control* pFocus = nullptr;
  string sCaption;
  platform::FormPlace tPlace;
  platform::WindowState eState = platform::WindowState::Normal;
  std::map<std::pair<int16_t, int16_t>, MenuItem> colMenu;
  std::map<int16_t, Control> colControl;

 private:
  void Set(const char* sWhat, double& dField, double dNew) {
    Note(sWhat + to_string(static_cast<int32_t>(dNew)));
    dField = dNew;
  }
  void Resized() {
    if (bShown) Deliver(&FormEvents::Resize);
  }
};

using Control = Form::Control;

class Toolkit final : public platform::Toolkit, public Script {
 public:
  Toolkit() { platform::SetToolkit(*this); }
  void LoadForm(const platform::FormDesign& tDesign, shared_ptr<FormEvents> pLogic) override {
    const auto pForm = apForm.emplace_back(std::make_shared<Form>(*this, tDesign, pLogic));
    pForm->Deliver(&FormEvents::Load, *pForm);
  }
  std::vector<shared_ptr<FormEvents>> LoadedForms() const override {
    std::vector<shared_ptr<FormEvents>> apLogic;
    for (const auto& pForm : apForm) apLogic.push_back(pForm->pLogic);
    return apLogic;
  }
  platform::Form* FormByName(string_view sName) override {
    return sName == "frmDisass" && !apForm.empty() ? apForm.front().get() : nullptr;
  }
  platform::Form* ActiveForm() override { return pActive; }
  void Run() override {}
  void DoEvents() override {
    if (auto tEvent = colAtYield.extract(++lYields)) tEvent.mapped()();
  }
  /// Throws the status. No std::exception: nothing in the program may take it for an error.
  [[noreturn]] void EndProgram(int32_t lStatus) override { throw lStatus; }
  bool IsEndingProgram() const override { return bEndingProgram; }
  int32_t MessageBox(string_view sPrompt, int32_t lStyle, string_view sTitle) override {
    const shared_ptr<Form> pOwner = apHandling.back();
    atBox.emplace_back(sPrompt, lStyle, sTitle);
    EXPECT_FALSE(atAnswer.empty()) << "unexpected message: " << sPrompt;
    if (atAnswer.empty()) return 1;
    const auto [lResult, fnMeanwhile] = std::move(atAnswer.front());
    atAnswer.pop_front();
    if (fnMeanwhile) fnMeanwhile();
    return !pOwner->bGone ? lResult : (lStyle & 1) != 0 ? 2 : (lStyle & 4) != 0 ? 7 : 1;
  }
  platform::Size ScreenSize() const override { return tScreen; }
  double TwipsPerPixelX() const override { return 15; }
  double TwipsPerPixelY() const override { return 15; }
  uint32_t SetMouseHook(platform::MouseProc fnNew) override {
    asLog.emplace_back("hook on");
    EXPECT_EQ(exchange(fnMouseProc, fnNew), nullptr) << "a second hook";
    return 77;
  }
  void RemoveMouseHook(uint32_t hHook) override {
    asLog.emplace_back("hook off");
    EXPECT_TRUE(hHook == 77 && exchange(fnMouseProc, nullptr) != nullptr);
  }
  intptr_t CallNextHook(uint32_t hHook, int32_t nCode, uintptr_t wParam, intptr_t lPar) override {
    return static_cast<intptr_t>(hHook) + nCode + static_cast<intptr_t>(wParam) + lPar;
  }
  WindowProc SetWindowProc(uint32_t hWnd, WindowProc fnProc) override {
    if (fnProc == ListProc) colProc.erase(hWnd);
    if (fnProc != ListProc) colProc[hWnd] = fnProc;
    return ListProc;
  }
  intptr_t CallWindowProc(WindowProc fnProc, uint32_t hWnd, uint32_t uMsg, uintptr_t wParam,
                          intptr_t lParam) override {
    return fnProc(hWnd, uMsg, wParam, lParam);
  }
  WindowProc GetProp(uint32_t hWnd, const char*) override { return colProp[hWnd]; }
  void SetProp(uint32_t hWnd, const char*, WindowProc fnNew) override { colProp[hWnd] = fnNew; }
  void RemoveProp(uint32_t hWnd, const char*) override { colProp.erase(hWnd); }
  platform::Size IconSize(IconKind eKind) const override {
    return eKind == IconKind::Small ? platform::Size{24, 0} : platform::Size{0, 48};
  }
  uint32_t LoadIcon(const string& sPath, platform::Size tPixels) override {
    asLog.push_back("load " + std::filesystem::path(sPath).filename().string() + ' ' +
                    to_string(tPixels.lWidth) + 'x' + to_string(tPixels.lHeight));
    return tPixels.lWidth == 24 ? 1 : 2;
  }

 private:
  static intptr_t ListProc(uint32_t, uint32_t, uintptr_t, intptr_t) { return 0; }
};

}  // namespace recording
