#pragma once

#include <memory>
#include <string>

#include "platform/ToolkitCore.h"
#include "platform/win32/WinHeaders.h"

namespace platform::win32 {

/// The toolkit on the Windows calls alone.
class WinToolkit final : public ToolkitCore {
 public:
  WinToolkit();
  ~WinToolkit() override;
  WinToolkit(const WinToolkit&) = delete;
  WinToolkit& operator=(const WinToolkit&) = delete;

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

  void SweepLater() override;

 private:
  std::shared_ptr<FormCore> NewForm(const FormDesign& tDesign,
                                    std::shared_ptr<FormEvents> pEvents) override;
  FormCore* FrontForm() override;
  void RunPendingEvents() override;
  std::int32_t RunMessageBox(FormCore* pOwner, std::string_view sPrompt, std::int32_t lStyle,
                             std::string_view sTitle) override;
  Size ScreenPixels() const override;
};

}  // namespace platform::win32
