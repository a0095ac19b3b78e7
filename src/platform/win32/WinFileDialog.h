#pragma once

#include "platform/Toolkit.h"
#include "platform/win32/WinHeaders.h"

namespace platform::win32 {

/// Shows the system's file dialog, modal to a window.
FileDialogResult RunFileDialog(HWND hOwner, const FileDialogRequest& tRequest);

}  // namespace platform::win32
