#include "disass/WindowTest.h"
#include "windows/modALLForms.h"

namespace {

using namespace modALLForms;

const string CAPTION = "Varnel - Disassembler/Assembler", NUMBERED = CAPTION + " - Window ";

/// The Window menu's items by number, the current one marked, behind a "-" for the separator.
string WindowMenu(const Form& frm) {
  string sMenu = frm.colMenu.at({MNU_WINDOW_SEP, 0}).bVisible ? "-" : "";
  for (const auto& [tKey, tItem] : frm.colMenu) {
    if (tKey.first == MNU_WINDOW_ITEM && (tItem.bVisible || tKey.second > 0)) {
      EXPECT_TRUE(tItem.bVisible && tItem.sCaption == NUMBERED + to_string(tKey.second + 1));
      sMenu += tItem.sCaption.substr(NUMBERED.size()) + (tItem.bChecked ? "*" : "");
    }
  }
  return sMenu;
}

TEST_F(WindowTest, NumbersCaptionsAndMenusFollowTheOpenWindows) {
  std::map<char, Form*> colWindow{{'1', &Open()}};  // by number
  EXPECT_FALSE(RegisterWindow(nullptr));
  EXPECT_FALSE(OpenNewWindow(nullptr, 0, 0));
  // "+" opens the window that gets this number, "-" closes one, "!" activates one, ">" minimises
  // one and picks it in the menu of window 1.
  const struct {
    const char *sAction, *sMenu;
    char bPrimary;
  } atCase[] = {{"+2", "-12*", '1'},  {"+3", "-123*", '1'}, {"-2", "-13*", '1'},
                {"+2", "-12*3", '1'}, {"!3", "-123*", '1'}, {">2", "-12*3", '1'},
                {">9", "-12*3", '1'}, {"-2", "-1*3", '1'},  {"!3", "-13*", '1'},
                {">1", "-1*3", '1'},  {"-1", "", '3'},      {"+1", "-1*3", '1'},
                {"!3", "-13*", '1'},  {"-1", "", '3'}};
  for (const auto& tCase : atCase) {
    SCOPED_TRACE(tCase.sAction);
    const char bNumber = tCase.sAction[1];
    const auto itWindow = colWindow.find(bNumber);
    if (tCase.sAction[0] == '+') {
      Form& frmOpener = *colWindow.begin()->second;
      frmOpener.PickMenu(MNU_WINDOW_OPEN);
      colWindow[bNumber] = tToolkit.apForm.back().get();
      EXPECT_EQ(colWindow[bNumber]->tPlace.dTop, frmOpener.tPlace.dTop + 300);
      EXPECT_EQ(colWindow[bNumber]->tPlace.dLeft, frmOpener.tPlace.dLeft + 300);
    } else if (tCase.sAction[0] == '-') {
      itWindow->second->Unload();
      colWindow.erase(itWindow);
    } else if (tCase.sAction[0] == '!') {
      tToolkit.pActive = nullptr;
      itWindow->second->SetFocus();
      EXPECT_TRUE(RegisterWindow(&Logic(*itWindow->second)));
    } else {
      const bool bOpen = itWindow != colWindow.end();
      if (bOpen) itWindow->second->SetState(platform::WindowState::Minimized);
      tToolkit.TakeLog();
      colWindow['1']->PickMenu(MNU_WINDOW_ITEM, static_cast<int16_t>(bNumber - '1'));
      EXPECT_EQ(std::ranges::count(tToolkit.TakeLog(), "to top"), bOpen ? 1 : 0);
      EXPECT_TRUE(!bOpen || itWindow->second->eState == platform::WindowState::Normal);
    }
    for (const auto& [bOpen, frm] : colWindow) {
      EXPECT_EQ(WindowMenu(*frm), tCase.sMenu);
      EXPECT_EQ(frm->sCaption, colWindow.size() > 1 ? NUMBERED + bOpen : CAPTION);
      EXPECT_EQ(IsPrimaryWindow(&Logic(*frm)), bOpen == tCase.bPrimary);
    }
  }
  // One that was never active, and is closed in its first listing.
  Form& frmLate = Load();
  tToolkit.AtDoEvents(1, [&] { frmLate.Unload(); });
  colWindow['3']->PickMenu(MNU_WINDOW_ITEM, 0);
  EXPECT_TRUE(frmLate.bGone);
  // A full house refuses one more on either road.
  while (tToolkit.apForm.size() < 16) Open();
  tToolkit.Answer(OK);
  tToolkit.Answer(OK);
  colWindow['3']->PickMenu(MNU_WINDOW_OPEN);
  EXPECT_TRUE(Load().bGone);
  EXPECT_EQ(tToolkit.TakeBoxes(),
            (std::vector<Box>{{"Unable to open a new window", 48, "Varnel - Error"},
                              {"Maximum number of windows reached", 48, "Varnel - Error"}}));
}

}  // namespace
