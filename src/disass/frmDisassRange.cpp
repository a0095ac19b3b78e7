// Address range entry.

#include <algorithm>

#include "disass/frmDisass.h"
#include "util/modALLUtilityMessages.h"

using modALLUtility::ADDRESS_SPACE;
using modALLUtility::Hex4;

namespace {

constexpr std::int32_t BACKSPACE = 8;

}  // namespace

std::int32_t frmDisass::AddressField_KeyPress(std::int32_t lCharacter) {
  if (lCharacter == BACKSPACE) {
    return lCharacter;
  }
  const std::int32_t lUpper = modALLUtility::UpperCase(lCharacter);
  const bool bDigit = (lUpper >= '0' && lUpper <= '9') || (lUpper >= 'A' && lUpper <= 'F');
  return bDigit ? lUpper : 0;
}

/// Completes a field that was left to four digits and reads it. Text that came in another way than
/// by typing and is no address is replaced by the address in force; false then.
bool frmDisass::TakeAddress(platform::TextBox& txtField, std::int32_t& lAddress) const {
  const std::string sDigits = modDISListing::CompleteAddress(txtField.Text());
  txtField.SetText(sDigits.empty() ? Hex4(lAddress) : sDigits);
  if (sDigits.empty()) {
    return false;
  }
  lAddress = modDISListing::LineAddress(sDigits);
  return true;
}

void frmDisass::txtStart_LostFocus() {
  if (EditorOpen() || !txtStart->Enabled() || !TakeAddress(*txtStart, lStartAddr)) {
    return;
  }
  txtEnd->SetText(Hex4(std::min(lStartAddr + modDISListing::USUAL_LENGTH, ADDRESS_SPACE - 1)));
}

void frmDisass::txtEnd_LostFocus() {
  if (EditorOpen() || !txtEnd->Enabled() || !TakeAddress(*txtEnd, lEndAddr)) {
    return;
  }
  if (lStartAddr <= lEndAddr) {
    position(true, -1);
    return;
  }
  modALLUtility::ShowMessage("Start address > End address", modALLUtility::MSG_EXCLAMATION,
                             modALLUtility::TITLE_ERROR);
  if (!bUnloaded) {
    txtStart->SetFocus();
  }
}
