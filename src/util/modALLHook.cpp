#include "util/modALLHook.h"

#include "platform/Toolkit.h"

namespace modALLHook {

namespace {

std::uint32_t hActivityHook = 0;

// The window most recently loaded or activated. It is kept, hidden, when it closes, so that a press
// in another window that comes before that one's activation is reported, too.
std::shared_ptr<ActivityTarget> frmHookTarget;

bool bInActivityCall = false;

void NotifyUserActivity(ActivityTarget* frm) {
  if (frm == nullptr || bInActivityCall) {
    return;
  }
  bInActivityCall = true;
  frm->do_UserActivity();
  bInActivityCall = false;
}

std::intptr_t ActivityMouseProc(std::int32_t nCode, std::uintptr_t wParam, std::intptr_t lParam) {
  // A code other than 0 is a message that is only being peeked at and will come again.
  if (nCode == 0 && IsActivityMessage(wParam)) {
    NotifyUserActivity(frmHookTarget.get());
  }
  bInActivityCall = false;
  return platform::TheToolkit().CallNextHook(hActivityHook, nCode, wParam, lParam);
}

}  // namespace

void InstallActivityHook(const std::shared_ptr<ActivityTarget>& frm) {
  if (frm == nullptr) {
    return;
  }
  frmHookTarget = frm;
  if (hActivityHook == 0) {
    hActivityHook = platform::TheToolkit().SetMouseHook(ActivityMouseProc);
  }
}

void RemoveActivityHook() {
  if (hActivityHook != 0) {
    platform::TheToolkit().RemoveMouseHook(hActivityHook);
    hActivityHook = 0;
  }
  frmHookTarget.reset();
  bInActivityCall = false;
}

bool IsActivityMessage(std::uintptr_t lMsg) {
  switch (lMsg) {
    case 0x201:  // WM_LBUTTONDOWN
    case 0x203:  // WM_LBUTTONDBLCLK
    case 0x204:  // WM_RBUTTONDOWN
    case 0x206:  // WM_RBUTTONDBLCLK
    case 0x207:  // WM_MBUTTONDOWN
    case 0x209:  // WM_MBUTTONDBLCLK
    case 0x20B:  // WM_XBUTTONDOWN
    case 0x20D:  // WM_XBUTTONDBLCLK
    case 0xA1:   // WM_NCLBUTTONDOWN
    case 0xA3:   // WM_NCLBUTTONDBLCLK
    case 0xA4:   // WM_NCRBUTTONDOWN
    case 0xA6:   // WM_NCRBUTTONDBLCLK
    case 0xA7:   // WM_NCMBUTTONDOWN
    case 0xA9:   // WM_NCMBUTTONDBLCLK
    case 0xAB:   // WM_NCXBUTTONDOWN
    case 0xAD:   // WM_NCXBUTTONDBLCLK
      return true;
    default:
      return false;
  }
}

}  // namespace modALLHook
