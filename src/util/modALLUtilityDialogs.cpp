#include "util/modALLUtilityDialogs.h"

#include <exception>

#include "config/modALLProcessFolders.h"
#include "link/modALLSharedMap.h"
#include "platform/Environment.h"
#include "util/modALLUtilityMessages.h"

namespace modALLUtility {

namespace {

constexpr std::int32_t LONGEST_PATH = 32767;

/// Sets one of the two icons at the size that the system wants; false when it does not load.
bool SetIcon(platform::Form& frm, const std::string& sPath, platform::IconKind eKind,
             std::int32_t lUsualSize) {
  platform::Size tPixels = platform::TheToolkit().IconSize(eKind);
  tPixels.lWidth = tPixels.lWidth < 1 ? lUsualSize : tPixels.lWidth;
  tPixels.lHeight = tPixels.lHeight < 1 ? lUsualSize : tPixels.lHeight;
  const std::uint32_t hIcon = platform::TheToolkit().LoadIcon(sPath, tPixels);
  if (hIcon != 0) {
    frm.SetIcon(eKind, hIcon);
  }
  return hIcon != 0;
}

}  // namespace

std::string IconFilePath() {
  return modALLProcess::TempFolder() + platform::PATH_SEPARATOR + "wnd_form_icon_" +
         std::to_string(modALLSharedMap::lIconNumber) + ".ico";
}

bool SetFormIcon(platform::Form* frm) {
  if (frm == nullptr) {
    return false;
  }
  try {
    const std::string sPath = IconFilePath();
    if (!platform::PathExists(sPath)) {
      return false;
    }
    const bool bSmall = SetIcon(*frm, sPath, platform::IconKind::Small, 16);
    const bool bBig = SetIcon(*frm, sPath, platform::IconKind::Big, 32);
    return bSmall || bBig;
  } catch (const std::exception&) {
    return false;
  }
}

bool ShowFileDialog(platform::Form& frm, std::string& sFileName, bool bSave,
                    std::string_view sFilter, std::int32_t lFlags, std::string_view sInitialName) {
  using Outcome = platform::FileDialogResult::Outcome;
  const platform::FileDialogResult tResult =
      frm.ShowFileDialog({.bSave = bSave,
                          .sFilter = sFilter,
                          .lFilterIndex = 1,
                          .lFlags = lFlags == -1 ? FILE_DIALOG_DEFAULT_FLAGS : lFlags,
                          .lMaxFileSize = LONGEST_PATH,
                          .sFileName = bSave ? sInitialName : std::string_view{}});
  if (tResult.eOutcome == Outcome::Failed) {
    ShowMessage(
        "Unexpected error. Err " + std::to_string(tResult.lError) + " : " + tResult.sDescription,
        MSG_CRITICAL, TITLE_ERROR);
  }
  if (tResult.eOutcome != Outcome::Chosen) {
    return false;
  }
  sFileName = tResult.sPath;
  return true;
}

}  // namespace modALLUtility
