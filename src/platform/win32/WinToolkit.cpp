#include "platform/win32/WinToolkit.h"

#include <algorithm>

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

/// On 64-bit Windows all procedures are called alike, and one that takes a handle's low 32 bits
/// reads them where the whole handle is passed. So the program's own procedures and the system's
/// are exchanged as they are.
LONG_PTR NativeProc(WindowProc fnProc) { return reinterpret_cast<LONG_PTR>(fnProc); }
WindowProc OwnProc(LONG_PTR pProc) { return reinterpret_cast<WindowProc>(pProc); }
static_assert(sizeof(void*) == 8);

HWND WindowOf(const FormCore& frm) { return static_cast<const WinForm&>(frm).Window(); }

/// The answer of a box that is dismissed unanswered.
std::int32_t DismissedAnswer(std::int32_t lStyle) {
  switch (static_cast<std::uint32_t>(lStyle) & MB_TYPEMASK) {
    case MB_OK:
      return IDOK;
    case MB_YESNO:
      return IDNO;
    default:
      return IDCANCEL;
  }
}

}  // namespace

WinToolkit::WinToolkit() {
  const INITCOMMONCONTROLSEX tControls = {sizeof(tControls), ICC_STANDARD_CLASSES};
  ::InitCommonControlsEx(&tControls);
  // The file dialog is the shell's, and the shell is made of COM objects.
  ::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
}

WinToolkit::~WinToolkit() {
  LetGoOfForms();
  ::CoUninitialize();
}

// ---- Forms and events ---------------------------------------------------------------------------

std::shared_ptr<FormCore> WinToolkit::NewForm(const FormDesign& tDesign,
                                              std::shared_ptr<FormEvents> pEvents) {
  return std::make_shared<WinForm>(*this, tDesign, std::move(pEvents));
}

FormCore* WinToolkit::FrontForm() {
  HWND hActive = ::GetActiveWindow();
  // A message box or a dialog stands for its owner.
  for (; hActive != nullptr; hActive = ::GetWindow(hActive, GW_OWNER)) {
    for (const auto& pForm : Forms()) {
      if (WindowOf(*pForm) == hActive) return pForm.get();
    }
  }
  return nullptr;
}

void WinToolkit::Run() {
  MSG tMessage = {};
  while (!Forms().empty() && ::GetMessageW(&tMessage, nullptr, 0, 0) > 0) {
    ::TranslateMessage(&tMessage);
    ::DispatchMessageW(&tMessage);
    Sweep();
  }
}

/// Run sweeps after every message it takes; one that was sent, not posted, as by a program that
/// closes another's windows, does not make it come back by itself.
void WinToolkit::SweepLater() { ::PostThreadMessageW(::GetCurrentThreadId(), WM_NULL, 0, 0); }

void WinToolkit::RunPendingEvents() {
  MSG tMessage = {};
  while (::PeekMessageW(&tMessage, nullptr, 0, 0, PM_REMOVE) != 0) {
    ::TranslateMessage(&tMessage);
    ::DispatchMessageW(&tMessage);
  }
}

void WinToolkit::EndProgram(std::int32_t lStatus) { ::ExitProcess(static_cast<UINT>(lStatus)); }

std::int32_t WinToolkit::RunMessageBox(FormCore* pOwner, std::string_view sPrompt,
                                       std::int32_t lStyle, std::string_view sTitle) {
  const auto pKeep = pOwner != nullptr ? pOwner->shared_from_this() : nullptr;
  const auto fnUnloaded = [&] { return pKeep != nullptr && pKeep->IsUnloaded(); };
  if (fnUnloaded()) return DismissedAnswer(lStyle);
  const HWND hForm = pOwner != nullptr ? WindowOf(*pOwner) : nullptr;
  const HWND hOwner = ::IsWindowVisible(hForm) != 0 ? hForm : nullptr;
  // One without an owner could come up behind the windows of whoever started the program.
  const auto lFront = hOwner == nullptr ? UINT{MB_SETFOREGROUND} : 0U;
  const int lAnswer =
      ::MessageBoxA(hOwner, std::string(sPrompt).c_str(), std::string(sTitle).c_str(),
                    static_cast<UINT>(lStyle) | lFront);
  return fnUnloaded() ? DismissedAnswer(lStyle) : lAnswer;
}

// ---- Screen and icons ---------------------------------------------------------------------------

Size WinToolkit::ScreenPixels() const {
  return {::GetSystemMetrics(SM_CXSCREEN), ::GetSystemMetrics(SM_CYSCREEN)};
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
