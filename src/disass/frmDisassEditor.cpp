// The in-place editor over the instruction column, and the write into the emulated memory.

#include <algorithm>
#include <cmath>

#include "disass/frmDisass.h"
#include "disass/frmDisassDesign.h"
#include "link/modALLSharedMap.h"
#include "util/modALLUtilityMessages.h"
#include "z80/modDISAsm.h"

using modALLUtility::AddrAdd;
using modALLUtility::Hex4;
using modALLUtility::ShowMessage;

namespace {

// Where a list's text begins, and room for the editor's own border.
constexpr std::int32_t LIST_BORDER = 60;
constexpr std::int32_t EXTRA_WIDTH = 90;
constexpr std::int32_t EXTRA_HEIGHT = 60;

constexpr std::int16_t KEY_ENTER = 13;
constexpr std::int16_t KEY_ESC = 27;
constexpr std::int16_t KEY_UP = 38;
constexpr std::int16_t KEY_DOWN = 40;

std::string Trimmed(const std::string& sText) {
  const std::size_t lFirst = sText.find_first_not_of(' ');
  return lFirst == std::string::npos
             ? std::string{}
             : sText.substr(lFirst, sText.find_last_not_of(' ') - lFirst + 1);
}

/// The upper-case form of a character that an 8-bit listing can hold, which ISO 8859-1 fixes: of a
/// letter that has none there, the sharp s or a y with two dots, itself.
std::int32_t UpperCaseLatin1(std::int32_t lCharacter) {
  constexpr std::int32_t A_GRAVE = 0xE0;
  constexpr std::int32_t THORN = 0xFE;
  constexpr std::int32_t DIVISION_SIGN = 0xF7;  // among the letters
  const bool bLetter = lCharacter >= A_GRAVE && lCharacter <= THORN && lCharacter != DIVISION_SIGN;
  return bLetter ? lCharacter - 0x20 : modALLUtility::UpperCase(lCharacter);
}

bool SameText(std::string_view sLeft, std::string_view sRight) {
  return std::ranges::equal(sLeft, sRight, {}, modALLUtility::UpperCase, modALLUtility::UpperCase);
}

/// What the editor is called over the line of an address, for who cannot see where it stands.
std::string EditorName(std::int32_t lAddress) { return "Instruction at " + Hex4(lAddress); }

}  // namespace

bool frmDisass::txtAsm_KeyDown(std::int16_t iKeyCode) {
  switch (iKeyCode) {
    case KEY_ESC:
      CloseAsmEditor(true);
      return true;
    case KEY_ENTER:
      AssembleAndWrite();
      return true;
    case KEY_UP:
      MoveAsmEditor(-1);
      return true;
    case KEY_DOWN:
      MoveAsmEditor(+1);
      return true;
    default:
      return false;
  }
}

std::int32_t frmDisass::txtAsm_KeyPress(std::int32_t lCharacter) {
  return lCharacter == KEY_ENTER ? 0 : UpperCaseLatin1(lCharacter);
}

void frmDisass::OpenAsmEditor() {
  const std::int32_t lLine = lstDis->SelectedIndex();
  if (lLine < 0 || lLine >= tListing.LineCount()) {
    return;
  }
  const std::string_view sLine = tListing.Line(lLine);
  lEditAddr = modDISListing::LineAddress(sLine);
  txtStart->SetEnabled(false);
  txtEnd->SetEnabled(false);
  cmdDisass->SetEnabled(false);

  txtAsm->SetText(modDISListing::LineInstruction(sLine));
  lstDis->ScrollToLeft();  // or the editor might stand left of what can be seen
  txtAsm->Move(EditorPlace(lLine));
  modDISListFollow::StartListFollow(lstDis->WindowHandle(), this);
  txtAsm->SetVisible(true);
  txtAsm->BringToFront();
  ReturnToEditor();
}

/// The place over exactly the instruction column of a line.
platform::TwipsRect frmDisass::EditorPlace(std::int32_t lLine) const {
  const platform::TwipsRect tList = lstDis->Place();
  const double dTop = (lLine - lstDis->TopIndex()) * ListItemTwips();
  return {
      .lLeft = tList.lLeft + LIST_BORDER - lstDis->LeftOffset() +
               GetListTextWidth(tListing.Line(lLine).substr(0, modDISListing::INSTRUCTION_COLUMN)),
      .lTop = tList.lTop + static_cast<std::int32_t>(std::nearbyint(dTop)),
      .lWidth = GetListTextWidth(std::string(modDISListing::INSTRUCTION_WIDTH, ' ')) + EXTRA_WIDTH,
      .lHeight = GetListItemHeight() + EXTRA_HEIGHT};
}

void frmDisass::CloseAsmEditor(bool bFocusList) {
  if (!EditorOpen()) {
    return;
  }
  modDISListFollow::StopListFollow(lstDis->WindowHandle());
  txtStart->SetEnabled(true);
  txtEnd->SetEnabled(true);
  cmdDisass->SetEnabled(true);
  if (bFocusList) {
    lstDis->SetFocus();
  }
  txtAsm->SetVisible(false);
}

void frmDisass::ReturnToEditor() {
  txtAsm->SetAccessibleName(EditorName(lEditAddr));
  txtAsm->SetFocus();
  txtAsm->SelectAll();
}

void frmDisass::DisassEditFollowListScroll() {
  if (!EditorOpen()) {
    return;
  }
  const std::int32_t lLine = lstDis->SelectedIndex();
  const std::int32_t lRow = lLine - lstDis->TopIndex();
  // A line that the list's lower edge cuts is in view: the user may have opened the editor there.
  if (lLine < 0 || lRow < 0 || lRow * ListItemTwips() >= lstDis->InnerHeight()) {
    CloseAsmEditor(true);
    return;
  }
  txtAsm->Move(EditorPlace(lLine));
}

void frmDisass::MoveAsmEditor(std::int32_t lDelta) {
  if (!EditorOpen() || tListing.LineCount() == 0) {
    return;
  }
  const std::int32_t lSelected = lstDis->SelectedIndex();
  const std::int32_t lLine = std::clamp(lSelected + lDelta, 0, tListing.LineCount() - 1);
  if (lLine != lSelected) {
    EnsureListIndexVisible(lLine);
    SelectQuietly(lLine);
    OpenAsmEditor();
  }
}

void frmDisass::EditAtAddress(std::int32_t lAddress) {
  const std::int32_t lLine = tListing.LineStartingAt(lAddress);
  if (lLine >= 0 && tListing.InRange(lAddress)) {
    EnsureListIndexVisible(lLine);
    SelectQuietly(lLine);
    OpenAsmEditor();
  }
}

void frmDisass::AssembleAndWrite() {
  const std::int32_t lLine = lstDis->SelectedIndex();
  if (lLine < 0 || lLine >= tListing.LineCount()) {
    return;
  }
  const std::int32_t lAddress = lEditAddr;
  const std::string sLine(tListing.Line(lLine));
  const std::string sTyped = txtAsm->Text();
  const std::string sNew = Trimmed(sTyped);
  const std::int32_t lCurrent = modDISListing::CountLineBytes(sLine);
  std::int32_t lWrite = lCurrent;

  const bool bWritten = !SameText(sNew, modDISListing::LineInstruction(sLine));

  if (bWritten) {
    modDISAsm::AsmBytes tBytes;
    std::string sError;
    if (!modDISAsm::AsmAssemble(sNew, lAddress, tBytes, sError)) {
      ShowMessage(sError.empty() ? "Unable to assemble instruction" : sError,
                  modALLUtility::MSG_EXCLAMATION, modALLUtility::TITLE_ERROR);
      if (!bUnloaded && EditorOpen()) {
        ReturnToEditor();
      }
      return;
    }
    if (tBytes.iLength < 1) {
      return;
    }
    lWrite = std::max<std::int32_t>(tBytes.iLength, lCurrent);
    if (!ConfirmWrite(lAddress, tBytes.iLength, lCurrent)) {
      return;
    }
    // A shorter instruction is filled up with NOPs (00H), so that the next one stays where it is.
    std::array<std::uint8_t, 4> abWrite{};
    std::ranges::copy(tBytes.View(), abWrite.begin());
    const std::span<const std::uint8_t> abWritten(abWrite.data(), static_cast<std::size_t>(lWrite));
    modALLSharedMap::WriteRam(lAddress, abWritten);
    modDISListing::WriteMemoryImage(lAddress, abWritten);
    modALLSharedMap::SetRamChanged(0xFF);
    // While a question was open, the editor may have been closed, moved or given another text, as
    // by a request to show an address. Then this window is one like the others, and stays where it
    // is.
    const bool bEditing = EditorOpen() && lEditAddr == lAddress && txtAsm->Text() == sTyped;
    const auto iWrite = static_cast<std::int16_t>(lWrite);
    if (bEditing) {
      RefreshFromChange(lAddress, lWrite);
    } else {
      DisassExternalRamChanged(lAddress, iWrite);
    }
    NotifyOtherWindows(lAddress, iWrite);
    if (!bEditing) {
      return;
    }
  }

  const std::int32_t lNext = lAddress + lWrite;
  if (tListing.InRange(lNext)) {
    EditAtAddress(lNext);
    if (const std::int32_t lWritten = tListing.LineStartingAt(lAddress);
        bWritten && lWritten >= 0) {
      txtAsm->SetAccessibleName(
          "Written at " + Hex4(lAddress) + ": " +
          std::string(modDISListing::LineInstruction(tListing.Line(lWritten))) + ". " +
          EditorName(lEditAddr));
    }
  } else {
    CloseAsmEditor(true);
  }
}

/// Asks what has to be asked before the lCurrent bytes of the line at lAddress are replaced by an
/// instruction of lNew; false when nothing may be written.
bool frmDisass::ConfirmWrite(std::int32_t lAddress, std::int32_t lNew, std::int32_t lCurrent) {
  const std::int32_t lWrite = std::max(lNew, lCurrent);
  const auto fnBytesThere = [=] {
    std::array<std::uint8_t, 4> abThere{};
    modALLSharedMap::ReadRam(lAddress,
                             std::span(abThere).first(static_cast<std::size_t>(lCurrent)));
    return abThere;
  };
  const std::array<std::uint8_t, 4> abAsked = fnBytesThere();
  const auto fnAsk = [&](const std::string& sQuestion, std::string_view sTitle) {
    bool bYes = ShowMessage(sQuestion,
                            modALLUtility::MSG_YES_NO + modALLUtility::MSG_EXCLAMATION +
                                modALLUtility::MSG_DEFAULT_BUTTON_2,
                            sTitle) == modALLUtility::MSG_RESULT_YES;
    if (bUnloaded) {
      return false;
    }
    // A Yes counts for the address that the question named, whatever the window shows by now, but
    // not for other bytes than those that it was to replace: the emulator or another window may
    // have written there meanwhile.
    if (bYes && fnBytesThere() != abAsked) {
      bYes = false;
      ShowMessage("Nothing was written.\r\n\r\nThe bytes at " + Hex4(lAddress) +
                      " have changed since the question was asked.",
                  modALLUtility::MSG_EXCLAMATION, modALLUtility::TITLE_ERROR);
    }
    if (!bYes && !bUnloaded && EditorOpen() && lEditAddr == lAddress) {
      ReturnToEditor();
    }
    return bYes;
  };
  if (!chkAllow->Checked() && RangeHasProtectedByte(lAddress, lWrite) &&
      !fnAsk("One or more bytes that will be written are in protected RAM.\r\n\r\n"
             "Start address: " +
                 Hex4(lAddress) + "\r\nWrite length: " + std::to_string(lWrite) +
                 " byte(s)\r\n\r\nDo you confirm writing to RAM?",
             modALLUtility::TITLE_PROTECTED_RAM)) {
    return false;
  }
  return chkLong->Checked() || lNew <= lCurrent ||
         fnAsk(
             "The assembled instruction is longer than the current instruction.\r\n\r\n"
             "Address: " +
                 Hex4(lAddress) + "\r\nCurrent length: " + std::to_string(lCurrent) +
                 " byte(s)\r\nNew length: " + std::to_string(lNew) +
                 " byte(s)\r\n\r\nThis may overwrite bytes belonging to the following "
                 "instruction(s).\r\nDo you want to continue?",
             modALLUtility::TITLE_ASSEMBLER_WARNING);
}

void frmDisass::NotifyOtherWindows(std::int32_t lAddress, std::int16_t iCount) {
  if (iCount < 1) {
    return;
  }
  for (const auto& pLoaded : platform::TheToolkit().LoadedForms()) {
    if (const auto frmOther = std::dynamic_pointer_cast<frmDisass>(pLoaded);
        frmOther != nullptr && frmOther.get() != this) {
      frmOther->DisassExternalRamChanged(lAddress, iCount);
    }
  }
}

bool frmDisass::RangeHasProtectedByte(std::int32_t lAddress, std::int32_t lCount) {
  if (lCount < 1) {
    return false;
  }
  LoadProtectionMap();
  for (std::int32_t lByte = 0; lByte < lCount; ++lByte) {
    if (bProtMap[static_cast<std::size_t>(AddrAdd(lAddress, lByte))] != 0) {
      return true;
    }
  }
  return false;
}

void frmDisass::LoadProtectionMap() { modALLSharedMap::CopyProtectionMap(bProtMap); }

std::int32_t frmDisass::GetListTextWidth(std::string_view sText) const {
  return static_cast<std::int32_t>(std::nearbyint(lstDis->TextWidth(sText)));
}
