// The in-place editor, what it asks and writes, and what may happen while it asks.

#include <sstream>

#include "disass/WindowTest.h"
#include "z80/modDISAsm.h"

namespace {

/// Message boxes by codes: "P3" the protection question about 3 bytes, "L12" the one about 2 bytes
/// over 1, "E" the assembler's message about FOO.
std::vector<Box> Boxes(const string& sCodes, const string& sAddress) {
  std::vector<Box> atBox;
  std::istringstream tCodes(sCodes);
  for (string sCode; tCodes >> sCode;) {
    modDISAsm::AsmBytes tBytes;
    string sText;
    modDISAsm::AsmAssemble("FOO", 0x8000, tBytes, sText);
    string sTitle = "Error";
    if (sCode[0] == 'P') {
      sText =
          "One or more bytes that will be written are in protected RAM.\r\n\r\nStart address: " +
          sAddress + "\r\nWrite length: " + sCode[1] +
          " byte(s)\r\n\r\nDo you confirm writing to RAM?";
      sTitle = "Protected RAM warning";
    } else if (sCode[0] == 'L') {
      sText = "The assembled instruction is longer than the current instruction.\r\n\r\nAddress: " +
              sAddress + "\r\nCurrent length: " + sCode[1] + " byte(s)\r\nNew length: " + sCode[2] +
              " byte(s)\r\n\r\nThis may overwrite bytes belonging to the following instruction(s)."
              "\r\nDo you want to continue?";
      sTitle = "Assembler warning";
    }
    atBox.emplace_back(sText, sCode == "E" ? 48 : 308, "Varnel - " + sTitle);
  }
  return atBox;
}

TEST_F(WindowTest, EnterWritesWhatWasTypedAndConfirmed) {
  const struct {
    int32_t lAddress;
    const char *sBytes, *sTyped;  // "=" in front: pasted; nothing but "=": left as it is
    std::string_view sChecked;    // A, L: the box that suppresses this warning
    int32_t lProtected;
    std::string_view sAnswers;
    const char *sBoxes, *sBytesThen;
    std::string_view sEditor;  // empty: closed; "!": as it was
  } atCase[] = {
      {0x8000, "21 34 12", "=", "", 0x8000, "", "", "21 34 12", "8003 NOP"},
      {0x8000, "21 34 12", "= ld hl,1234 ", "", 0x8000, "", "", "21 34 12", "8003 NOP"},
      {0x8000, "21 34 12", "inc a", "", -1, "", "", "3C 00 00", "8003 NOP"},
      {0x8000, "00 00 C3 00", "ld bc,1234", "", -1, "Y", "L13", "01 34 12 00", "8003 NOP"},
      {0x8000, "00 00 C3 00", "ld bc,1234", "L", -1, "", "", "01 34 12 00", "8003 NOP"},
      {0x8001, "00", "ld bc,1234", "A", 0x8001, "N", "L13", "00 00 00", "!"},
      {0x8000, "21 34 12", "inc a", "L", 0x8002, "Y", "P3", "3C 00 00", "8003 NOP"},
      {0x8000, "21 34 12", "inc a", "", 0x8003, "", "", "3C 00 00", "8003 NOP"},
      {0x8000, "21 34 12", "inc a", "", 0x8000, "C", "P3", "21 34 12", "!"},
      {0x8000, "00 00", "jr 8000", "", 0x8001, "N", "P2", "00 00", "!"},
      {0x8000, "00 00", "jr 8000", "", 0x8001, "YN", "P2 L12", "00 00", "!"},
      {0x8000, "00 00", "jr 8000", "", 0x8001, "YY", "P2 L12", "18 FE", "8002 NOP"},
      {0x8000, "00 00", "jr 8000", "AL", 0x8001, "", "", "18 FE", "8002 NOP"},
      {0x8000, "00", "foo", "", 0x8000, "Y", "E", "00", "!"},
      {0x8010, "00", "inc a", "", -1, "", "", "3C", ""},
      {0x8010, "00", "=", "", -1, "", "", "00", ""},
      {0xFFFE, "00 00", "jp 1234", "", 0x0000, "YY", "P3 L13", "C3 34 12", ""},
      {0x8000, "DD DD DD 21 34 12", "nop", "", -1, "", "", "00 00 00 00 34 12", "8004 INC (HL)"},
      {0x8000, "ED 63 34 12", "=", "", -1, "", "", "ED 63 34 12", "8004 NOP"},
      {0x8000, "DD 26 12", "=* ld ixl,12", "", -1, "", "", "DD 2E 12", "8003 NOP"},
  };
  for (const auto& tCase : atCase) {
    SCOPED_TRACE(string(tCase.sBytes) + ": " + tCase.sTyped + ' ' + tCase.sBoxes);
    std::fill(abRam, abRam + 0x20000, uint8_t{0});
    Put(tCase.lAddress, tCase.sBytes);
    alControl[1] = 0;
    const bool bTop = tCase.lAddress > 0x8010;
    Form &frm = Open(), &frmOther = Open();
    List(frm, bTop ? "FFF0" : "8000", bTop ? "FFFF" : "8010");
    List(frmOther, bTop ? "0000" : "7FFE", bTop ? "0008" : "8020");
    for (const char bBox : tCase.sChecked) frm.Press(bBox == 'A' ? CHK_ALLOW : CHK_LONG);
    if (tCase.lProtected >= 0) abRam[0x10000 + tCase.lProtected] = 1;
    const string sTyped = tCase.sTyped;
    Edit(frm, tCase.lAddress, sTyped[0] == '=' ? "" : tCase.sTyped);
    if (sTyped[0] == '=' && sTyped != "=") frm.ControlOf(TXT_ASM).SetText(sTyped.substr(1));
    const string sEditor = Editor(frm);
    for (const char bAnswer : tCase.sAnswers) {
      tToolkit.Answer(bAnswer == 'Y' ? YES : bAnswer == 'N' ? NO : CANCEL);
    }
    const std::vector<uint8_t> abBefore(abRam, abRam + 0x10000);
    frm.Key(ENTER);
    EXPECT_EQ(tToolkit.TakeBoxes(), Boxes(tCase.sBoxes, Hex4(tCase.lAddress)));
    const string sThen = tCase.sBytesThen;
    EXPECT_EQ(Dump(tCase.lAddress, (sThen.size() + 1) / 3), sThen);
    EXPECT_EQ(RamChanged(), !std::equal(abBefore.begin(), abBefore.end(), abRam));
    EXPECT_EQ(Editor(frm), tCase.sEditor == "!" ? sEditor : tCase.sEditor);
    const bool bClosed = tCase.sEditor.empty();
    EXPECT_EQ(frm.pFocus, &frm.ControlOf(bClosed ? LST_DIS : TXT_ASM));
    EXPECT_NE(frm.pFocus->bAllSelected, bClosed);
    ExpectSound(frm);
    ExpectSound(frmOther);
    frm.Unload();
    frmOther.Unload();
  }
}

TEST_F(WindowTest, EditorStandsOverItsLineAndMoves) {
  Put(0x8001, "21 34 12 C9");
  Form& frm = Open();
  List(frm, "8000", "8040");
  const Control& txt = frm.ControlOf(TXT_ASM);
  frm.ControlOf(LST_DIS).lLeftOffset = 3000;  // its column was scrolled out of view
  Edit(frm, 0x8001);
  const auto [lLeft, lTop, lWidth, lHeight] = txt.tPlace;
  EXPECT_EQ(std::tuple(lLeft, lTop, lWidth, lHeight), std::tuple(120 + 60 + 2213, 1365, 2093, 285));
  frm.Type("\xE0\xF7\xFC\xFF\xDF");  // letters of ISO 8859-1, one sign, two without upper case
  EXPECT_EQ(txt.sText, "\xC0\xF7\xDC\xFF\xDF");
  frm.Key(ESC);
  Edit(frm, 0x8001);
  frm.Type("abcdef\r(ix + 05),h 123");
  EXPECT_EQ(txt.sText, "ABCDEF(IX + 05),H 1");
  const struct {
    int16_t iKey;
    int iTimes;
    const char* sEditor;
    int32_t lRow;
  } atCase[] = {
      {DOWN, 1, "8004 RET", 2}, {UP, 1, "8001 LD HL,1234", 1},   {UP, 2, "8000 NOP", 0},
      {65, 1, "8000 A", 0},     {DOWN, 1, "8001 LD HL,1234", 1}, {DOWN, 80, "8040 NOP", 26},
      {UP, 30, "8022 NOP", 0},  {UP, 1, "8021 NOP", 0},          {DOWN, 3, "8024 NOP", 3}};
  for (const auto& tCase : atCase) {
    for (int iTime = 0; iTime < tCase.iTimes; ++iTime) frm.Key(tCase.iKey);
    EXPECT_EQ(Editor(frm), tCase.sEditor);
    EXPECT_EQ(txt.tPlace.lTop, 1140 + 225 * tCase.lRow) << tCase.sEditor;
    EXPECT_EQ(txt.bAllSelected, tCase.iKey != 65);
  }
  // It follows its line as the list scrolls, at once or with the timer, until the line is out.
  Control& lst = frm.ControlOf(LST_DIS);
  for (const int32_t lRow : {2, 1, 0, -1}) {
    lst.SetTopIndex(lst.lSelected - lRow);
    if (lRow == 1) {
      frm.Tick();
    } else {
      tToolkit.colProc.at(lst.WindowHandle())(lst.WindowHandle(), lRow == 2 ? 0x115 : 0x20A, 0, 0);
    }
    EXPECT_TRUE(lRow < 0 ? !txt.bVisible : txt.tPlace.lTop == 1140 + 225 * lRow) << lRow;
  }
  EXPECT_EQ(frm.pFocus, &lst);
  EXPECT_FALSE(RamChanged());
}

/// Whatever happens while a question is open: what it named is written there, or, where the bytes
/// there are others by now, nothing is, and that is said.
TEST_F(WindowTest, AnswersHoldOnlyForWhatWasAsked) {
  Form *pfrm = nullptr, *pfrmOther = nullptr;
  const auto fnShow = [&](uint32_t lAddress) -> Action {
    return [=, this, &pfrm] { RequestShow(lAddress), pfrm->Tick(); };
  };
  const auto fnWrite = [&](int32_t lAddress, const char* sText) -> Action {
    return [=, &pfrmOther] { Edit(*pfrmOther, lAddress, sText), pfrmOther->Key(ENTER); };
  };
  const struct {
    const char* sWhat;
    Action fnEvent;
    bool bHolds;
    const char* sEditor;  // where it is after a Yes; "": closed
  } atCase[] = {
      {"a tick", [&] { pfrm->Tick(); }, true, "FF07"},
      {"a show request", fnShow(0xF000), true, ""},
      {"one for a listed line", fnShow(0xFF06), true, ""},
      {"other text", [&] { pfrm->ControlOf(TXT_ASM).sText = "RET"; }, true, "FF04"},
      {"a change of the line", fnWrite(0xFF04, "RST 38H"), false, "FF04"},
      {"a change that swallows it", fnWrite(0xFF03, "JP 1234"), false, ""},
      {"a change by the emulator", [&] { abRam[0xFF04] = 0xC9; }, false, "FF04"},
      {"a change behind it", fnWrite(0xFF07, "RST 38H"), true, "FF07"},
      {"a change before it", fnWrite(0xFF01, "JR FF01"), true, "FF07"},
      {"a listing elsewhere", [&] { pfrmOther->Press(CMD_DISASS); }, true, "FF07"},
      {"closing the other", [&] { pfrmOther->Unload(); }, true, "FF07"},
      {"resizing", [&] { pfrm->SetWidth(3000); }, true, ""},
      {"closing", [&] { pfrm->Unload(); }, false, ""},
      {"closing both", [&] { pfrm->Unload(), pfrmOther->Unload(); }, false, ""},
  };
  for (const char bBox : {'P', 'L', 'E'}) {
    for (const auto& tCase : atCase) {
      SCOPED_TRACE(tCase.sWhat + string(" during ") + bBox);
      std::fill(abRam, abRam + 0x20000, uint8_t{0});
      abRam[0x1FF06] = 1;
      pfrm = &Open();
      pfrmOther = &Open();
      pfrmOther->Press(CHK_LONG);
      Edit(*pfrm, 0xFF04, bBox == 'E' ? "FOO" : "LD BC,1234");
      if (bBox == 'L') tToolkit.Answer(YES);
      tToolkit.Answer(YES, tCase.fnEvent);
      const bool bTold = !tCase.bHolds && !string_view(tCase.sWhat).starts_with("closing");
      if (bBox == 'P' && tCase.bHolds) tToolkit.Answer(YES);
      if (bBox != 'E' && bTold) tToolkit.Answer(OK);
      pfrm->Key(ENTER);
      EXPECT_TRUE(tToolkit.atAnswer.empty());
      const bool bWritten = tCase.bHolds && bBox != 'E';
      EXPECT_EQ(Dump(0xFF04, 3) == "01 34 12", bWritten) << Dump(0xFF00, 9);
      if (bBox != 'E' && bTold) {
        EXPECT_EQ(tToolkit.TakeBoxes().back(),
                  (Box{"Nothing was written.\r\n\r\nThe bytes at FF04 have changed since the "
                       "question was asked.",
                       48, "Varnel - Error"}));
      }
      if (!pfrm->bGone) {
        const string sEditor = tCase.sEditor;
        EXPECT_EQ(Editor(*pfrm).substr(0, 4), sEditor.empty() || bWritten ? sEditor : "FF04");
        // What the emulator writes by itself is listed when it is asked for.
        if (abRam[0xFF04] == 0xC9) pfrm->Key(ESC), pfrm->Press(CMD_DISASS);
        ExpectSound(*pfrm);
      }
      while (!tToolkit.apForm.empty()) tToolkit.apForm.front()->Unload();
    }
  }
}

TEST_F(WindowTest, EditorsElsewhereFollowAChange) {
  const struct {
    int32_t lEdited, lChanged;
    const char *sChange, *sEditor;
  } atCase[] = {{0x8010, 0x8010, "LD A,5", "8010 LD A,05"},
                {0x8010, 0x8004, "LD BC,1234", "8010 XYZ"},  // two lines fewer before it
                {0x8010, 0x8011, "LD A,5", "8010 XYZ"},
                {0x8010, 0x800E, "LD BC,1234", ""},  // its line is gone
                {0x8010, 0x9800, "LD A,5", "8010 XYZ"},
                {0x0001, 0xFFFF, "LD BC,1202", "0001 LD (DE),A"},
                {0x0000, 0xFFFF, "LD BC,1234", "0000 INC (HL)"}};
  Form& frm = Open();
  frm.Press(CHK_LONG);
  for (const auto& tCase : atCase) {
    SCOPED_TRACE(Hex4(tCase.lChanged) + ' ' + tCase.sChange);
    std::fill(abRam, abRam + 0x10000, uint8_t{0});
    List(frm, Hex4(tCase.lChanged - 2), Hex4(std::min(tCase.lChanged + 9, 0xFFFF)));
    Form& frmEditing = Open();
    List(frmEditing, Hex4(tCase.lEdited & 0x8000), tCase.lEdited < 2 ? "0040" : "8040");
    Edit(frmEditing, tCase.lEdited, "xyz");
    Edit(frm, tCase.lChanged, tCase.sChange);
    frm.Key(ENTER);
    EXPECT_EQ(Editor(frmEditing), tCase.sEditor);
    Control& txt = frmEditing.ControlOf(TXT_ASM);
    EXPECT_EQ(frmEditing.pFocus, txt.bVisible ? &txt : nullptr) << "the focus was moved";
    ExpectSound(frm);
    ExpectSound(frmEditing);
    frmEditing.Unload();
    frm.Key(ESC);
  }
}

TEST_F(RandomTyping, KeepsAllWindowsInStep) {
  std::vector<Form*> afrm;
  for (const auto& [sStart, sEnd] : {std::pair("8000", "8030"),
                                     {"8011", "8050"},
                                     {"8020", "8020"},
                                     {"FFE0", "FFFF"},
                                     {"0000", "0020"}}) {
    List(*afrm.emplace_back(&Open()), sStart, sEnd);
  }
  for (int iEdit = 0; iEdit < 2000; ++iEdit) {
    for (size_t lForm = 0; iEdit % 100 == 0 && lForm < afrm.size(); ++lForm) {
      if (lForm == 0) Fill(iEdit % 200 == 0 ? 4 : 200);
      afrm[lForm]->Key(ESC);
      afrm[lForm]->Press(CMD_DISASS);
    }
    Form& frm = *afrm[Random(5)];
    const int32_t lLine = Random(250) % Lines(frm).LineCount();
    const string sLine(Lines(frm).Line(lLine));
    frm.DoubleClick(LST_DIS, lLine);
    std::vector<uint8_t> abExpected(abRam, abRam + 0x10000);
    const auto [sText, abWritten] = Invent(sLine);
    frm.Type(sText);
    const bool bYes = Random(4) != 0;
    for (int iBox = 0; iBox < 2; ++iBox) tToolkit.Answer(bYes ? YES : NO);
    frm.Key(ENTER);
    int32_t lNext = modDISListing::LineAddress(sLine);
    for (const uint8_t bByte : abWritten) {
      if (bYes || tToolkit.atAnswer.size() == 2)
        abExpected[static_cast<size_t>(lNext++ & 0xFFFF)] = bByte;
    }
    tToolkit.atAnswer.clear();
    const bool bOpen = Lines(frm).InRange(lNext);
    ASSERT_EQ(Editor(frm).substr(0, 4), bOpen ? Hex4(lNext) : "") << sLine;
    ASSERT_TRUE(std::equal(abExpected.begin(), abExpected.end(), abRam)) << sLine;
    for (Form* const frmEach : afrm) ExpectSound(*frmEach, iEdit % 100 == 0 ? ADDRESS_SPACE : 16);
    ASSERT_FALSE(HasFailure()) << "edit " << iEdit << " of " << sLine;
  }
}

}  // namespace
