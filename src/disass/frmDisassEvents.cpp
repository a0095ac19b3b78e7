// What the toolkit reports of the form, its controls and its menus, by number, handed to the
// handlers by name.

#include "disass/frmDisass.h"
#include "disass/frmDisassDesign.h"

using namespace frmDisassDesign;  // NOLINT(google-build-using-namespace): the numbers are its use

std::shared_ptr<frmDisass> frmDisass::LoadNew(bool bDebug) {
  auto frmNew = std::make_shared<frmDisass>(bDebug);
  platform::TheToolkit().LoadForm(FORM, frmNew);
  return frmNew;
}

std::shared_ptr<modALLForms::Window> frmDisass::LoadNewInstance() { return LoadNew(bDebugOffered); }

modALLForms::WindowMenu frmDisass::WindowMenuNumbers() const {
  return {MNU_WINDOW_SEP, MNU_WINDOW_ITEM};
}

void frmDisass::Load(platform::Form& frmLoaded) {
  frmForm = &frmLoaded;
  txtStart = &frmLoaded.TextBoxOf(TXT_START);
  txtEnd = &frmLoaded.TextBoxOf(TXT_END);
  cmdDisass = &frmLoaded.ControlOf(CMD_DISASS);
  chkAllow = &frmLoaded.CheckBoxOf(CHK_ALLOW);
  chkLong = &frmLoaded.CheckBoxOf(CHK_LONG);
  cmdDebug = &frmLoaded.ControlOf(CMD_DEBUG);
  lstDis = &frmLoaded.ListBoxOf(LST_DIS);
  txtAsm = &frmLoaded.TextBoxOf(TXT_ASM);
  Form_Load();
}

void frmDisass::Click(std::int16_t iControl) {
  switch (iControl) {
    case CMD_DISASS:
      return cmdDisass_Click();
    case CMD_DEBUG:
      return cmdDebug_Click();
    case LST_DIS:
      return lstDis_Click();
    default:
      return;
  }
}

void frmDisass::DblClick(std::int16_t iControl) {
  if (iControl == LST_DIS) {
    lstDis_DblClick();
  }
}

void frmDisass::GotFocus(std::int16_t iControl) {
  // Entering an address field selects it all, so that typing replaces it.
  if (iControl == TXT_START) {
    txtStart->SelectAll();
  } else if (iControl == TXT_END) {
    txtEnd->SelectAll();
  }
}

void frmDisass::LostFocus(std::int16_t iControl) {
  if (iControl == TXT_START) {
    txtStart_LostFocus();
  } else if (iControl == TXT_END) {
    txtEnd_LostFocus();
  }
}

bool frmDisass::KeyDown(std::int16_t iControl, std::int16_t iKeyCode) {
  switch (iControl) {
    case TXT_ASM:
      return txtAsm_KeyDown(iKeyCode);
    case LST_DIS:
      return lstDis_KeyDown(iKeyCode);
    default:
      return false;
  }
}

std::int32_t frmDisass::KeyPress(std::int16_t iControl, std::int32_t lCharacter) {
  switch (iControl) {
    case TXT_START:
    case TXT_END:
      return AddressField_KeyPress(lCharacter);
    case TXT_ASM:
      return txtAsm_KeyPress(lCharacter);
    case LST_DIS:
      return lstDis_KeyPress(lCharacter);
    default:
      return lCharacter;
  }
}

void frmDisass::MouseUp(std::int16_t iControl, std::int16_t iButton, std::int16_t /*iShift*/,
                        double dX, double dY) {
  if (iControl == LST_DIS) {
    lstDis_MouseUp(iButton, dX, dY);
  }
}

void frmDisass::MenuClick(std::int16_t iMenu, std::int16_t iIndex) {
  switch (iMenu) {
    case MNU_SAVE:
      return mnuSave_Click();
    case MNU_WINDOW_OPEN:
      return mnuWindowOpen_Click();
    case MNU_WINDOW_ITEM:
      return modALLForms::ActivateWindowSlot(iIndex);
    case MNU_SET_BREAKPOINT:
      return mnuSetBreakpoint_Click();
    default:
      return;
  }
}
