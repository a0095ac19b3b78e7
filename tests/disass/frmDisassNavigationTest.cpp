// Mouse and keys on the listing, the editor that follows its scrolling, breakpoints, saving.

#include "disass/WindowTest.h"
#include "util/modALLUtilityDialogs.h"

namespace {

TEST_F(WindowTest, EditorFollowsScrolling) {
  Form& frm = Open(0x100);
  Form& frmOther = Open(0x100);
  EditLine(frmOther, 0x105);
  const Control& txt = frm.ControlOf(TXT_ASM);
  Control& lst = frm.ControlOf(LST_DIS);
  for (const bool bSubclassFails : {false, true}) {
    tToolkit.bSubclassFails = bSubclassFails;
    tToolkit.TakeLog();
    EditLine(frm, 0x108);
    frm.Key(DOWN);
    EXPECT_EQ(std::ranges::count(tToolkit.TakeLog(), "subclassed list"), bSubclassFails ? 0 : 1);
    tToolkit.fnListMessage = [&] { lst.lTop += 4; };
    for (const auto& [uMsg, lRow] :
         {std::pair(0x115U, 5), {0x200U, bSubclassFails ? 1 : 5}, {0x20AU, -3}, {0x114U, -7}}) {
      EXPECT_EQ(tToolkit.SendToList(lst.WindowHandle(), uMsg), uMsg + 1);
      if (bSubclassFails) frm.Tick();
      EXPECT_EQ(txt.bVisible, lRow >= 0) << uMsg;
      EXPECT_TRUE(lRow < 0 || txt.tPlace.lTop == 1140 + 225 * lRow) << uMsg;
    }
    EXPECT_EQ(frm.pFocus, &lst);
    lst.lTop = 0;
  }
  tToolkit.bSubclassFails = false;
  EXPECT_EQ(tToolkit.colProp.size(), 1U);
  EXPECT_EQ(Editor(frmOther), "0105 NOP");
}

TEST_F(WindowTest, GesturesOnTheListing) {
  Put(0xC000, "21 34 12 C9");
  Form& frm = Open(0xC000);
  List(frm, "C000", "C008");
  const auto fnRow = [](int32_t lRow) { return 15 * (15.0 * lRow + 7); };
  // Editor closed.
  EXPECT_EQ(alControl[0], 0U);
  frm.RightClick(LST_DIS, 100, fnRow(7));
  frm.RightClick(LST_DIS, 6100, fnRow(1));
  frm.RightClick(LST_DIS, 100, fnRow(1), 1);
  EXPECT_EQ(Selected(frm) + std::to_string(alControl[0]), "C0000");
  frm.ClickLine(LST_DIS, 1);
  EXPECT_EQ(Selected(frm) + std::to_string(alControl[0]), "C00312");
  tToolkit.TakeLog();
  tToolkit.fnDuringMenuOrDialog = [&] {
    frm.Tick();
    frm.PickMenu(MNU_SET_BREAKPOINT);
  };
  frm.RightClick(LST_DIS, 100, fnRow(0));
  EXPECT_EQ(tToolkit.TakeLog(), (std::vector<string>{"select in lstDis", "pop-up Disassembler"}));
  EXPECT_EQ(alControl[3], 0xC000U);
  EXPECT_TRUE(platform::WaitNamedEvent(hBreakpoint));
  frm.Type("a");
  EXPECT_EQ(Editor(frm), "");
  frm.Key(ENTER);
  EXPECT_EQ(Editor(frm), "C000 LD HL,1234");
  // Editor open.
  frm.Type("x");
  frm.RightClick(LST_DIS, 100, fnRow(7));
  EXPECT_EQ(Editor(frm), "C000 X");
  frm.RightClick(LST_DIS, 100, fnRow(1));
  EXPECT_EQ(Editor(frm), "C003 RET");
  frm.Type("x");
  frm.ClickLine(LST_DIS, 2);
  EXPECT_EQ(Editor(frm), "C004 NOP");
  EXPECT_EQ(std::ranges::count(tToolkit.TakeLog(), "pop-up Disassembler"), 0);
  // No line selected.
  frm.Key(ESC);
  frm.ControlOf(LST_DIS).lSelected = -1;
  frm.Key(ENTER);
  frm.DoubleClick(LST_DIS, -1);
  frm.PickMenu(MNU_SET_BREAKPOINT);
  EXPECT_EQ(Editor(frm), "");
  EXPECT_FALSE(platform::WaitNamedEvent(hBreakpoint));
  tToolkit.fnDuringMenuOrDialog = [&] { frm.Unload(); };
  frm.RightClick(LST_DIS, 100, fnRow(1));
}

TEST_F(WindowTest, SavesTheListing) {
  using Outcome = platform::FileDialogResult::Outcome;
  const string sOld = tFolder.Path("old"), sNew = tFolder.Path("new"), sIn = tFolder.Path("in/x");
  const string sLines =
      "8000 0A              LD A,(BC)           \n \r\n"
      "8001 21 00 FF        LD HL,FF00          ! " +
      string(1, '\0') + " \xFF \r\n";
  const Box tSaved{"File saved", 64, "Varnel - Confirmation"};
  const auto fnAsk = [](const string& sPath) {
    return Box{sPath + "\r\n\r\nFile already exists. Do you confirm overwrite?", 33,
               "Varnel - Question"};
  };
  const auto fnError = [](const string& sText) { return Box{sText, 16, "Varnel - Error"}; };
  Form* pfrm = nullptr;
  const Action fnClose = [&] { pfrm->Unload(); }, fnList = [&] { List(*pfrm, "8001", "8003"); };
  const struct {
    Outcome eOutcome;
    string sPath;
    Action fnDuringDialog, fnDuringBox;
    int32_t lAnswer;
    std::vector<Box> atBox;
    string sFile, sContents;
  } atCase[] = {
      {Outcome::Chosen, sNew, {}, {}, OK, {tSaved}, sNew, sLines},
      {Outcome::Chosen, sOld, {}, {}, OK, {fnAsk(sOld), tSaved}, sOld, sLines},
      {Outcome::Chosen, sOld, {}, {}, CANCEL, {fnAsk(sOld)}, sOld, "old"},
      {Outcome::Chosen, sNew, fnList, {}, OK, {tSaved}, sNew, sLines.substr(45)},
      {Outcome::Chosen, sOld, fnClose, {}, OK, {}, sOld, "old"},
      {Outcome::Chosen, sOld, {}, fnClose, OK, {fnAsk(sOld)}, sOld, "old"},
      {Outcome::Cancelled, sOld, {}, {}, OK, {}, sOld, "old"},
      {Outcome::Failed,
       sOld,
       {},
       {},
       OK,
       {fnError("Unexpected error. Err 5 : No printer")},
       sOld,
       "old"},
      {Outcome::Chosen,
       sIn,
       {},
       {},
       OK,
       {fnError("Unable to save the file\r\n\r\n" + sIn + "\r\n\r\nNo such file or directory")},
       sOld,
       "old"},
  };
  Put(0x8000, "0A 21 00 FF");
  for (const auto& tCase : atCase) {
    SCOPED_TRACE(tCase.sPath + tCase.sContents);
    pfrm = &Open();
    List(*pfrm, "8000", "8003");
    test::WriteFile(sOld, "old");
    tToolkit.tChosen = {tCase.eOutcome, tCase.sPath, 5, "No printer"};
    tToolkit.fnDuringMenuOrDialog = tCase.fnDuringDialog;
    for (size_t lBox = 0; lBox < tCase.atBox.size(); ++lBox)
      tToolkit.Answer(tCase.lAnswer, tCase.fnDuringBox);
    pfrm->PickMenu(MNU_SAVE);
    EXPECT_EQ(tToolkit.sDialogAsked,
              "save Text files (*.txt)|*.txt|All files (*.*)|*.* 1 2052 32767 ");
    EXPECT_EQ(tToolkit.TakeBoxes(), tCase.atBox);
    EXPECT_EQ(test::ReadFile(tCase.sFile), tCase.sContents);
    while (!tToolkit.apForm.empty()) pfrm->Unload();
    std::filesystem::remove(sNew);
  }
}

TEST_F(WindowTest, IconAndFileDialog) {
  Form& frm = Load();
  EXPECT_FALSE(modALLUtility::SetFormIcon(&frm));
  test::WriteFile(modALLUtility::IconFilePath(), "");
  for (const uint32_t hBad : {1U, 2U}) {
    tToolkit.TakeLog();
    tToolkit.hBadIcon = hBad;
    EXPECT_TRUE(modALLUtility::SetFormIcon(&frm));
    EXPECT_EQ(tToolkit.TakeLog()[1], hBad == 1 ? "load wnd_form_icon_7.ico 32x48" : "icon 0 is 1");
  }
  EXPECT_FALSE(modALLUtility::SetFormIcon(nullptr));
  string sPath;
  tToolkit.tChosen = {platform::FileDialogResult::Outcome::Chosen, "/x", 0, ""};
  EXPECT_TRUE(modALLUtility::ShowFileDialog(frm, sPath, false, "A|*.a", -1, "name"));
  EXPECT_EQ(sPath + ' ' + tToolkit.sDialogAsked, "/x open A|*.a 1 6145 32767 ");
}

}  // namespace
