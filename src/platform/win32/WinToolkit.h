#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/Toolkit.h"
#include "platform/win32/WinHeaders.h"

namespace platform::win32 {

class WinForm;

/// The toolkit on the Windows calls alone.
class WinToolkit final : public Toolkit {
 public:
  WinToolkit();
  ~WinToolkit() override;
  WinToolkit(const WinToolkit&) = delete;
  WinToolkit& operator=(const WinToolkit&) = delete;

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

  // What follows is for this toolkit's own forms.

  /// Keeps a form that has unloaded until nobody can reach it any more.
  void FormUnloaded(const std::shared_ptr<WinForm>& pForm);

  /// Exchanges the form whose event is being handled; gives the previous one, nullptr for none.
  WinForm* ExchangeHandling(WinForm* pForm) { return std::exchange(pHandling, pForm); }

 private:
  struct UnloadedForm {
    std::shared_ptr<WinForm> pForm;
    std::weak_ptr<FormEvents> pEvents;
  };

  WinForm* FrontForm();
  void Sweep();

  std::vector<std::shared_ptr<WinForm>> apForm;  // loaded or unloading, oldest first
  std::vector<UnloadedForm> atUnloaded;
  WinForm* pHandling = nullptr;
  std::chrono::steady_clock::time_point tLastEvents;
};

}  // namespace platform::win32
