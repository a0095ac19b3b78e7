#pragma once

#include <QApplication>
#include <QImage>
#include <QTimer>
#include <chrono>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/Toolkit.h"

namespace platform::qt {

class QtForm;

/// The toolkit on Qt Widgets.
class QtToolkit final : public Toolkit {
 public:
  QtToolkit(int& lArgc, char** asArgv);
  ~QtToolkit() override;
  QtToolkit(const QtToolkit&) = delete;
  QtToolkit& operator=(const QtToolkit&) = delete;

  void LoadForm(const FormDesign& tDesign, std::shared_ptr<FormEvents> pEvents) override;
  std::vector<std::shared_ptr<FormEvents>> LoadedForms() const override;
  Form* FormByName(std::string_view sName) override;
  Form* ActiveForm() override;
  void Run() override;
  void DoEvents() override;
  [[noreturn]] void EndProgram(std::int32_t lStatus) override;
  std::int32_t MessageBox(std::string_view sPrompt, std::int32_t lStyle,
                          std::string_view sTitle) override;
  Size ScreenSize() const override;
  double TwipsPerPixelX() const override;
  double TwipsPerPixelY() const override;
  std::uint32_t SetMouseHook(MouseProc fnMouseProc) override;
  void RemoveMouseHook(std::uint32_t hHook) override;
  std::intptr_t CallNextHook(std::uint32_t hHook, std::int32_t nCode, std::uintptr_t wParam,
                             std::intptr_t lParam) override;
  WindowProc SetWindowProc(std::uint32_t hWnd, WindowProc fnProc) override;
  std::intptr_t CallWindowProc(WindowProc fnProc, std::uint32_t hWnd, std::uint32_t uMsg,
                               std::uintptr_t wParam, std::intptr_t lParam) override;
  WindowProc GetProp(std::uint32_t hWnd, const char* sName) override;
  void SetProp(std::uint32_t hWnd, const char* sName, WindowProc fnValue) override;
  void RemoveProp(std::uint32_t hWnd, const char* sName) override;
  Size IconSize(IconKind eKind) const override;
  std::uint32_t LoadIcon(const std::string& sPath, Size tPixels) override;

  // What follows is for this toolkit's own forms and controls.

  /// Keeps a form that has unloaded until nobody can reach it any more, and ends Run after the
  /// last one.
  void FormUnloaded(const std::shared_ptr<QtForm>& pForm);
  /// Has the unloaded forms looked through once the event loop is back.
  void SweepLater() { tmrSweep.start(); }

  /// Exchanges the form whose event is being handled; gives the previous one, nullptr for none.
  QtForm* ExchangeHandling(QtForm* pForm) { return std::exchange(pHandling, pForm); }

  std::uint32_t AddList();  ///< a new list's window handle
  void RemoveList(std::uint32_t hWnd);
  /// Tells a list's window procedure of a scroll that has been made.
  void ListScrolled(std::uint32_t hWnd, std::uint32_t uMsg);

  /// Notes that a window is about to move, open, close or become active by the program's own doing.
  void NoteOwnAction();
  /// Reports a press on a window's frame, unless it is the echo of the program's own doing.
  void ReportFramePress();

  const QImage* Icon(std::uint32_t hIcon) const;  ///< nullptr: no such icon

 private:
  class MouseWatch;
  struct ListWindow {
    WindowProc fnProc;
    std::map<std::string, WindowProc> colProp;
  };
  struct UnloadedForm {
    std::shared_ptr<QtForm> pForm;
    std::weak_ptr<FormEvents> pEvents;
  };

  QtForm* FrontForm();  // the form that is active itself or by a dialog; nullptr: none
  void Sweep();

  QApplication tApplication;
  std::vector<std::shared_ptr<QtForm>> apForm;  // loaded or unloading, oldest first
  std::vector<UnloadedForm> atUnloaded;
  QTimer tmrSweep;
  QtForm* pHandling = nullptr;
  bool bRunning = false;
  std::chrono::steady_clock::time_point tLastEvents;
  std::chrono::steady_clock::time_point tLastOwnAction;
  std::unique_ptr<MouseWatch> pMouseWatch;  // while a hook is installed
  std::map<std::uint32_t, ListWindow> colList;
  std::uint32_t hLastList = 0;
  std::vector<QImage> atIcon;  // an icon's handle is its index + 1
};

}  // namespace platform::qt
