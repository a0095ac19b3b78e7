// Saving the listing to a text file.

#include "disass/frmDisass.h"
#include "platform/Environment.h"
#include "platform/SavedFile.h"
#include "util/modALLUtilityDialogs.h"
#include "util/modALLUtilityMessages.h"

using modALLUtility::ShowMessage;

void frmDisass::mnuSave_Click() {
  // A listing in the making is not what anyone sees.
  if (bInDisass) {
    return;
  }
  std::string sFileName;
  if (!modALLUtility::ShowFileDialog(
          *frmForm, sFileName, true, "Text files (*.txt)|*.txt|All files (*.*)|*.*",
          modALLUtility::FILE_DIALOG_PATH_MUST_EXIST | modALLUtility::FILE_DIALOG_HIDE_READ_ONLY,
          "") ||
      bUnloaded) {
    return;
  }
  if (platform::PathExists(sFileName) &&
      (ShowMessage(sFileName + "\r\n\r\nFile already exists. Do you confirm overwrite?",
                   modALLUtility::MSG_OK_CANCEL + modALLUtility::MSG_QUESTION,
                   modALLUtility::TITLE_QUESTION) != modALLUtility::MSG_RESULT_OK ||
       bUnloaded)) {
    return;
  }
  std::string sText;
  for (std::int32_t lLine = 0; lLine < tListing.LineCount(); ++lLine) {
    sText.append(tListing.Line(lLine)).append("\r\n");
  }
  const std::string sReason = platform::SaveFileWhole(sFileName, sText);
  if (sReason.empty()) {
    ShowMessage("File saved", modALLUtility::MSG_INFORMATION, modALLUtility::TITLE_CONFIRMATION);
  } else {
    ShowMessage("Unable to save the file\r\n\r\n" + sFileName + "\r\n\r\n" + sReason,
                modALLUtility::MSG_CRITICAL, modALLUtility::TITLE_ERROR);
  }
}
