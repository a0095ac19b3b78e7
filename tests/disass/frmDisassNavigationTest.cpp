// The mouse on the listing, breakpoints, saving.

#include "disass/WindowTest.h"
#include "platform/SavedFile.h"

namespace {

TEST_F(WindowTest, BreakpointsAreSetWhereTheMenuWasOpened) {
  Put(0xC000, "21 34 12 C9");
  Form& frm = Open();
  List(frm, "C000", "C008");
  Control& lst = frm.ControlOf(LST_DIS);
  const auto fnClick = [&](int32_t lRow, double dX = 100) {
    frm.Click(LST_DIS, 2, dX, 15 * (15.0 * lRow + 7));
  };
  const auto fnSet = [&] { frm.PickMenu(MNU_SET_BREAKPOINT); };
  // Beside the lines there is no menu; by the user's own selections the program becomes active.
  tToolkit.fnDuring = fnSet;
  fnClick(7);
  fnClick(1, 6100);
  EXPECT_FALSE(platform::WaitNamedEvent(hBreakpoint));
  EXPECT_EQ(Selected(frm) + ' ' + to_string(alControl[0]), "C000 0");
  fnClick(1);
  EXPECT_TRUE(alControl[3] == 0xC003 && platform::WaitNamedEvent(hBreakpoint));
  EXPECT_EQ(Selected(frm) + ' ' + to_string(alControl[0]), "C003 12");
  // With the editor open a click on a line moves it there, and beside the lines does nothing.
  frm.Key(ENTER);
  frm.Type("x");
  for (const auto& [lRow, sEditor] : {std::pair(7, "C003 X"), {0, "C000 LD HL,1234"}}) {
    fnClick(lRow);
    EXPECT_EQ(Editor(frm), sEditor);
  }
  lst.SetSelectedIndex(2);
  EXPECT_EQ(Editor(frm), "C004 NOP");
  frm.Key(ESC);
  // The command is for the line under the menu, whatever is selected by then; for none when the
  // window is closed or no menu was opened.
  const struct {
    const char* sMeanwhile;
    Action fnMeanwhile;
    bool bSet;
  } atCase[] = {
      {"another line is shown", [&] { RequestShow(0xC004), frm.Tick(), fnSet(); }, true},
      {"another range is listed", [&] { RequestShow(0x1000), frm.Tick(), fnSet(); }, true},
      {"nothing is selected", [&] { lst.lSelected = -1, fnSet(), frm.Key(ENTER); }, true},
      {"the window is closed", [&] { frm.Unload(), fnSet(); }, false},
  };
  for (const auto& tCase : atCase) {
    SCOPED_TRACE(tCase.sMeanwhile);
    List(frm, "C000", "C008");
    alControl[3] = 0;
    tToolkit.fnDuring = tCase.fnMeanwhile;
    fnClick(0);
    EXPECT_EQ(alControl[3], tCase.bSet ? 0xC000U : 0U);
    EXPECT_EQ(platform::WaitNamedEvent(hBreakpoint), tCase.bSet);
    EXPECT_FALSE(frm.colControl.at(TXT_ASM).bVisible);
  }
}

TEST_F(WindowTest, TheMenuKeyOpensThePopupOnTheSelectedLine) {
  constexpr int16_t MENU_KEY = 93;
  Form& frm = Open();
  List(frm, "C000", "C080");
  Control& lst = frm.ControlOf(LST_DIS);
  const auto fnMenuKey = [&] {
    frm.tPopupAt.reset();
    tToolkit.fnDuring = [&] { frm.PickMenu(MNU_SET_BREAKPOINT); };
    frm.Key(MENU_KEY);
    tToolkit.fnDuring = [] {};
    return platform::WaitNamedEvent(hBreakpoint);
  };
  const struct {
    const char* sWhat;
    int32_t lSelected, lTop;
    int32_t lTopThen;  // the line is scrolled into view
  } atCase[] = {{"in view", 5, 3, 3}, {"above", 5, 40, 5}, {"below", 100, 3, 74}};
  for (const auto& tCase : atCase) {
    SCOPED_TRACE(tCase.sWhat);
    lst.SetSelectedIndex(tCase.lSelected);
    lst.SetTopIndex(tCase.lTop);
    EXPECT_TRUE(fnMenuKey());
    EXPECT_EQ(alControl[3], 0xC000U + static_cast<uint32_t>(tCase.lSelected));
    EXPECT_EQ(lst.lTop, tCase.lTopThen);
    ASSERT_TRUE(frm.tPopupAt.has_value());
    const int32_t lLineTop = lst.tPlace.lTop + 225 * (tCase.lSelected - lst.lTop);
    EXPECT_EQ(frm.tPopupAt->lTop, lLineTop + 285);  // below the line, as high as an editor
  }
  lst.SetSelectedIndex(-1);
  EXPECT_FALSE(fnMenuKey());
}

TEST_F(WindowTest, SavesTheListing) {
  using enum platform::FileDialogResult::Outcome;
  const string sOld = tFolder.Path("old"), sNew = tFolder.Path("new"), sIn = tFolder.Path("in/x");
  const string sLines =
      "8000 0A              LD A,(BC)           \n \r\n"
      "8001 21 00 FF        LD HL,FF00          ! " +
      string(1, '\0') + " \xFF \r\n";
  const Box tSaved{"File saved", 64, "Varnel - Confirmation"},
      tAsked{sOld + "\r\n\r\nFile already exists. Do you confirm overwrite?", 33,
             "Varnel - Question"},
      tDialog{"Unexpected error. Err 5 : No printer", 16, "Varnel - Error"},
      tFolderGone{
          "Unable to save the file\r\n\r\n" + sIn + "\r\n\r\n" + platform::SaveFileWhole(sIn, ""),
          16, "Varnel - Error"};
  Form* pfrm = nullptr;
  const Action fnClose = [&] { pfrm->Unload(); }, fnList = [&] { List(*pfrm, "8001", "8003"); };
  const Action fnGoOn = [] {};
  const struct {
    platform::FileDialogResult::Outcome eOutcome;
    string sPath;
    Action fnDuring, fnDuringBox;
    int32_t lAnswer;
    std::vector<Box> atBox;
    string sContents;  // of that file afterwards
  } atCase[] = {{Chosen, sNew, fnGoOn, fnGoOn, OK, {tSaved}, sLines},
                {Chosen, sOld, fnGoOn, fnGoOn, CANCEL, {tAsked}, "old"},
                {Chosen, sNew, fnList, fnGoOn, OK, {tSaved}, sLines.substr(45)},
                {Chosen, sOld, fnClose, fnGoOn, OK, {}, "old"},
                {Chosen, sOld, fnGoOn, fnClose, OK, {tAsked}, "old"},
                {Cancelled, sOld, fnGoOn, fnGoOn, OK, {}, "old"},
                {Failed, sOld, fnGoOn, fnGoOn, OK, {tDialog}, "old"},
                {Chosen, sIn, fnGoOn, fnGoOn, OK, {tFolderGone}, ""}};
  Put(0x8000, "0A 21 00 FF");
  for (const auto& tCase : atCase) {
    SCOPED_TRACE(tCase.sPath + tCase.sContents);
    pfrm = &Open();
    List(*pfrm, "8000", "8003");
    test::WriteFile(sOld, "old");
    tToolkit.tChosen = {tCase.eOutcome, tCase.sPath, 5, "No printer"};
    tToolkit.fnDuring = tCase.fnDuring;
    for (size_t lBox = 0; lBox < tCase.atBox.size(); ++lBox) {
      tToolkit.Answer(tCase.lAnswer, tCase.fnDuringBox);
    }
    pfrm->PickMenu(MNU_SAVE);
    EXPECT_EQ(tToolkit.sDialogAsked,
              "save Text files (*.txt)|*.txt|All files (*.*)|*.* 1 2052 32767 ");
    EXPECT_EQ(tToolkit.TakeBoxes(), tCase.atBox);
    EXPECT_EQ(test::ReadFile(tCase.sPath), tCase.sContents);
    if (!pfrm->bGone) pfrm->Unload();
    std::filesystem::remove(sNew);
  }
}

}  // namespace
