#include "disass/modDISListFollow.h"

#include <map>
#include <string>

#include "platform/Toolkit.h"

namespace modDISListFollow {

namespace {

constexpr std::uint32_t WM_HSCROLL = 0x114;
constexpr std::uint32_t WM_VSCROLL = 0x115;
constexpr std::uint32_t WM_MOUSEWHEEL = 0x20A;

/// The property of a subclassed list that holds its previous window procedure.
constexpr const char* OLD_PROC = "VARNEL_DIS_LISTFOLLOW_OLDPROC";

std::map<std::string, FollowingWindow*> colListFollow;

std::string ListFollowKey(std::uint32_t hWnd) { return std::to_string(hWnd); }

std::intptr_t ListFollowWndProc(std::uint32_t hWnd, std::uint32_t uMsg, std::uintptr_t wParam,
                                std::intptr_t lParam) {
  platform::Toolkit& tToolkit = platform::TheToolkit();
  const platform::WindowProc fnOld = tToolkit.GetProp(hWnd, OLD_PROC);
  const std::intptr_t lResult =
      fnOld != nullptr ? tToolkit.CallWindowProc(fnOld, hWnd, uMsg, wParam, lParam) : 0;
  if (uMsg == WM_HSCROLL || uMsg == WM_VSCROLL || uMsg == WM_MOUSEWHEEL) {
    if (const auto itFound = colListFollow.find(ListFollowKey(hWnd));
        itFound != colListFollow.end()) {
      itFound->second->DisassEditFollowListScroll();
    }
  }
  return lResult;
}

}  // namespace

void StartListFollow(std::uint32_t hWnd, FollowingWindow* frm) {
  if (hWnd == 0) {
    return;
  }
  platform::Toolkit& tToolkit = platform::TheToolkit();
  colListFollow[ListFollowKey(hWnd)] = frm;
  if (tToolkit.GetProp(hWnd, OLD_PROC) == nullptr) {
    const platform::WindowProc fnOld = tToolkit.SetWindowProc(hWnd, ListFollowWndProc);
    if (fnOld != nullptr) {
      tToolkit.SetProp(hWnd, OLD_PROC, fnOld);
    } else {
      colListFollow.erase(ListFollowKey(hWnd));
    }
  }
}

void StopListFollow(std::uint32_t hWnd) {
  if (hWnd == 0) {
    return;
  }
  platform::Toolkit& tToolkit = platform::TheToolkit();
  if (const platform::WindowProc fnOld = tToolkit.GetProp(hWnd, OLD_PROC); fnOld != nullptr) {
    tToolkit.SetWindowProc(hWnd, fnOld);
    tToolkit.RemoveProp(hWnd, OLD_PROC);
  }
  colListFollow.erase(ListFollowKey(hWnd));
}

}  // namespace modDISListFollow
