#pragma once

#include <QApplication>
#include <QImage>
#include <QSocketNotifier>
#include <QTimer>
#include <chrono>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/ToolkitCore.h"

namespace platform::qt {

/// The toolkit on Qt Widgets.
class QtToolkit final : public ToolkitCore {
 public:
  QtToolkit(int& lArgc, char** asArgv);
  ~QtToolkit() override;
  QtToolkit(const QtToolkit&) = delete;
  QtToolkit& operator=(const QtToolkit&) = delete;

  void Run() override;
  [[noreturn]] void EndProgram(std::int32_t lStatus) override;
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

  void SweepLater() override;

  static bool OnWayland();  ///< where the compositor alone places windows and hands on the focus

  std::uint32_t AddList();  ///< a new list's window handle
  void RemoveList(std::uint32_t hWnd);
  /// Tells a list's window procedure of a scroll that has been made.
  void ListScrolled(std::uint32_t hWnd, std::uint32_t uMsg);

  /// Notes that a window is about to move, open, close or become active by the program's own doing.
  void NoteOwnAction();
  /// Whether what happens to a window now may be the echo of that.
  bool FollowsOwnAction() const;
  void ReportFramePress() const;  ///< to the mouse hook

  const QImage* Icon(std::uint32_t hIcon) const;  ///< nullptr: no such icon

 private:
  /// Has the program outlive an event, such as a window's drawing, that memory ran out for: Qt lets
  /// errors be caught here alone.
  class Application final : public QApplication {
   public:
    using QApplication::QApplication;
    bool notify(QObject* pReceiver, QEvent* pEvent) override;
  };

  class MouseWatch;
  struct ListWindow {
    WindowProc fnProc;
    std::map<std::string, WindowProc> colProp;
  };

  std::shared_ptr<FormCore> NewForm(const FormDesign& tDesign,
                                    std::shared_ptr<FormEvents> pEvents) override;
  FormCore* FrontForm() override;
  void RunPendingEvents() override;
  std::int32_t RunMessageBox(FormCore* pOwner, std::string_view sPrompt, std::int32_t lStyle,
                             std::string_view sTitle) override;
  Size ScreenPixels() const override;
  void CloseAll();  ///< as the user closes them: all forms, and what is open over them

  Application tApplication;
  QSocketNotifier tEndSignal;
  QTimer tmrSweep;
  bool bRunning = false;
  std::chrono::steady_clock::time_point tLastOwnAction;
  std::unique_ptr<MouseWatch> pMouseWatch;  // while a hook is installed
  std::map<std::uint32_t, ListWindow> colList;
  std::uint32_t hLastList = 0;
  std::vector<QImage> atIcon;  // an icon's handle is its index + 1
};

}  // namespace platform::qt
