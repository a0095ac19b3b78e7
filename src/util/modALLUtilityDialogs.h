#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/Toolkit.h"

/// The window icon, which the suite shares through a file in its temporary folder, and the file
/// dialog.
namespace modALLUtility {

/// File dialog flags of the Windows common dialogs.
inline constexpr std::int32_t FILE_DIALOG_HIDE_READ_ONLY = 0x4;
inline constexpr std::int32_t FILE_DIALOG_PATH_MUST_EXIST = 0x800;
/// Read-only box initially checked, path and file must exist.
inline constexpr std::int32_t FILE_DIALOG_DEFAULT_FLAGS = 0x1801;

/// The path of the icon file that another program of the suite writes.
/// Throws modALLProcess::RuntimeError when there is no temporary folder.
std::string IconFilePath();

/// Gives a window the suite's icon, small and large; true when at least one was set. A missing or
/// unreadable file leaves the window's own icon.
bool SetFormIcon(platform::Form* frm);

/// Asks the user for a file. Other events run meanwhile: afterwards, any window may be gone.
/// @param sFileName     receives the chosen path
/// @param sFilter       "caption|pattern|caption|pattern...", the first preselected
/// @param lFlags        FILE_DIALOG_ flags, or -1 for FILE_DIALOG_DEFAULT_FLAGS
/// @param sInitialName  a name to begin with when saving
/// @return false when the user cancelled, or, after a message, when the dialog failed
bool ShowFileDialog(platform::Form& frm, std::string& sFileName, bool bSave,
                    std::string_view sFilter, std::int32_t lFlags, std::string_view sInitialName);

}  // namespace modALLUtility
