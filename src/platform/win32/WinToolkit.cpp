#include "platform/win32/WinToolkit.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "platform/ToolkitFactory.h"
#include "platform/win32/SystemHandles.h"
#include "platform/win32/WinForm.h"
#include "platform/win32/WinMetrics.h"

namespace platform {

std::unique_ptr<Toolkit> CreateToolkit(int& /*lArgc*/, char** /*asArgv*/) {
  return std::make_unique<win32::WinToolkit>();
}

namespace win32 {

namespace {

using std::chrono::steady_clock;

constexpr std::chrono::microseconds EVENTS_INTERVAL{200};

/// On 64-bit Windows all procedures are called alike, and one that takes a handle's low 32 bits
/// reads them where the whole handle is passed. So the program's own procedures and the system's
/// are exchanged as they are.
LONG_PTR NativeProc(WindowProc fnProc) { return reinterpret_cast<LONG_PTR>(fnProc); }
WindowProc OwnProc(LONG_PTR pProc) { return reinterpret_cast<WindowProc>(pProc); }
static_assert(sizeof(void*) == 8);

}  // namespace

WinToolkit::WinToolkit() {
  const INITCOMMONCONTROLSEX tControls = {sizeof(tControls), ICC_STANDARD_CLASSES};
  ::InitCommonControlsEx(&tControls);
  // The file dialog is the shell's, and the shell is made of COM objects.
  ::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
}

WinToolkit::~WinToolkit() {
  apForm.clear();
  atUnloaded.clear();
  ::CoUninitialize();
}

// ---- Forms and events ---------------------------------------------------------------------------

void WinToolkit::LoadForm(const FormDesign& tDesign, std::shared_ptr<FormEvents> pEvents) {
  auto pForm = std::make_shared<WinForm>(*this, tDesign, std::move(pEvents));
  apForm.push_back(pForm);
  pForm->Load();
}

std::vector<std::shared_ptr<FormEvents>> WinToolkit::LoadedForms() const {
  std::vector<std::shared_ptr<FormEvents>> apLogic;
  apLogic.reserve(apForm.size());
  for (const auto& pForm : apForm) apLogic.push_back(pForm->Logic());
  return apLogic;
}

Form* WinToolkit::FormByName(std::string_view sName) {
  const auto itForm = std::ranges::find_if(apForm, [&](const auto& pForm) {
    return ::lstrcmpiA(pForm->Name().c_str(), std::string(sName).c_str()) == 0;
  });
  return itForm == apForm.end() ? nullptr : itForm->get();
}

WinForm* WinToolkit::FrontForm() {
  HWND hActive = ::GetActiveWindow();
  // A message box or a dialog stands for its owner.
  for (; hActive != nullptr; hActive = ::GetWindow(hActive, GW_OWNER)) {
    const auto itForm = std::ranges::find(apForm, hActive, &WinForm::Window);
    if (itForm != apForm.end()) return itForm->get();
  }
  return nullptr;
}

Form* WinToolkit::ActiveForm() { return FrontForm(); }

void WinToolkit::Run() {
  MSG tMessage = {};
  while (!apForm.empty() && ::GetMessageW(&tMessage, nullptr, 0, 0) > 0) {
    ::TranslateMessage(&tMessage);
    ::DispatchMessageW(&tMessage);
    Sweep();
  }
}

void WinToolkit::FormUnloaded(const std::shared_ptr<WinForm>& pForm) {
  std::erase(apForm, pForm);
  atUnloaded.push_back({pForm, pForm->Logic()});
}

/// Called where no handler of any form is on the stack. A form whose logic is still in someone's
/// hands may be asked for something yet.
void WinToolkit::Sweep() {
  std::erase_if(atUnloaded, [](const UnloadedForm& tForm) { return tForm.pEvents.expired(); });
}

void WinToolkit::DoEvents() {
  if (steady_clock::now() - tLastEvents < EVENTS_INTERVAL) return;
  MSG tMessage = {};
  while (::PeekMessageW(&tMessage, nullptr, 0, 0, PM_REMOVE) != 0) {
    ::TranslateMessage(&tMessage);
    ::DispatchMessageW(&tMessage);
  }
  tLastEvents = steady_clock::now();
}

void WinToolkit::EndProgram(std::int32_t lStatus) { ::ExitProcess(static_cast<UINT>(lStatus)); }

std::int32_t WinToolkit::MessageBox(std::string_view sPrompt, std::int32_t lStyle,
                                    std::string_view sTitle) {
  const std::string sText(sPrompt);
  const std::string sCaption(sTitle);
  WinForm* const pOwner = pHandling != nullptr ? pHandling : FrontForm();
  if (pOwner != nullptr) return pOwner->RunMessageBox(sText, lStyle, sCaption);
  return ::MessageBoxA(nullptr, sText.c_str(), sCaption.c_str(), static_cast<UINT>(lStyle));
}

// ---- Screen and icons ---------------------------------------------------------------------------

Size WinToolkit::ScreenSize() const {
  const auto fnTwips = [](std::int32_t lPixels) {
    return static_cast<std::int32_t>(std::lround(lPixels * TwipsPerPixel()));
  };
  return {fnTwips(::GetSystemMetrics(SM_CXSCREEN)), fnTwips(::GetSystemMetrics(SM_CYSCREEN))};
}

double WinToolkit::TwipsPerPixelX() const { return TwipsPerPixel(); }

double WinToolkit::TwipsPerPixelY() const { return TwipsPerPixel(); }

Size WinToolkit::IconSize(IconKind eKind) const {
  return eKind == IconKind::Small
             ? Size{::GetSystemMetrics(SM_CXSMICON), ::GetSystemMetrics(SM_CYSMICON)}
             : Size{::GetSystemMetrics(SM_CXICON), ::GetSystemMetrics(SM_CYICON)};
}

std::uint32_t WinToolkit::LoadIcon(const std::string& sPath, Size tPixels) {
  return NumberOf(::LoadImageA(nullptr, sPath.c_str(), IMAGE_ICON, tPixels.lWidth, tPixels.lHeight,
                               LR_LOADFROMFILE));
}

// ---- Mouse hook ---------------------------------------------------------------------------------

std::uint32_t WinToolkit::SetMouseHook(MouseProc fnMouseProc) {
  return NumberOf(::SetWindowsHookExA(WH_MOUSE, fnMouseProc, nullptr, ::GetCurrentThreadId()));
}

void WinToolkit::RemoveMouseHook(std::uint32_t hHook) {
  ::UnhookWindowsHookEx(HandleOf<HHOOK>(hHook));
}

std::intptr_t WinToolkit::CallNextHook(std::uint32_t hHook, std::int32_t nCode,
                                       std::uintptr_t wParam, std::intptr_t lParam) {
  return ::CallNextHookEx(HandleOf<HHOOK>(hHook), nCode, wParam, lParam);
}

// ---- List subclassing ---------------------------------------------------------------------------

WindowProc WinToolkit::SetWindowProc(std::uint32_t hWnd, WindowProc fnProc) {
  return OwnProc(::SetWindowLongPtrA(HandleOf<HWND>(hWnd), GWLP_WNDPROC, NativeProc(fnProc)));
}

std::intptr_t WinToolkit::CallWindowProc(WindowProc fnProc, std::uint32_t hWnd, std::uint32_t uMsg,
                                         std::uintptr_t wParam, std::intptr_t lParam) {
  return ::CallWindowProcA(reinterpret_cast<WNDPROC>(NativeProc(fnProc)), HandleOf<HWND>(hWnd),
                           uMsg, wParam, lParam);
}

WindowProc WinToolkit::GetProp(std::uint32_t hWnd, const char* sName) {
  return OwnProc(reinterpret_cast<LONG_PTR>(::GetPropA(HandleOf<HWND>(hWnd), sName)));
}

void WinToolkit::SetProp(std::uint32_t hWnd, const char* sName, WindowProc fnValue) {
  ::SetPropA(HandleOf<HWND>(hWnd), sName, reinterpret_cast<HANDLE>(NativeProc(fnValue)));
}

void WinToolkit::RemoveProp(std::uint32_t hWnd, const char* sName) {
  ::RemovePropA(HandleOf<HWND>(hWnd), sName);
}

}  // namespace win32
}  // namespace platform
