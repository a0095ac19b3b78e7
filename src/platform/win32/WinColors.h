#pragma once

#include "platform/Colors.h"
#include "platform/win32/WinHeaders.h"

namespace platform::win32 {

/// One of the user's colours, by its COLOR_ number.
inline Color SystemColor(int lNumber) {
  const DWORD lColor = ::GetSysColor(lNumber);
  return {GetRValue(lColor), GetGValue(lColor), GetBValue(lColor)};
}

inline COLORREF Shown(Color tColor) { return RGB(tColor.bRed, tColor.bGreen, tColor.bBlue); }

}  // namespace platform::win32
