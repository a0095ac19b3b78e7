#include "platform/win32/WinAccessible.h"

#include <algorithm>
#include <string_view>

#include "platform/ListText.h"
#include "platform/win32/WinListBox.h"

namespace platform::win32 {

namespace {

VARIANT NumberVariant(LONG lNumber) {
  VARIANT tNumber = {};
  tNumber.vt = VT_I4;
  tNumber.lVal = lNumber;
  return tNumber;
}

/// The child that an index of a line stands for, -1 for no line.
HRESULT GiveLine(std::int32_t lLine, VARIANT* pChild) {
  *pChild = lLine < 0 ? VARIANT{} : NumberVariant(lLine + 1);
  return lLine < 0 ? S_FALSE : S_OK;
}

bool IsSelf(const VARIANT& tChild) { return tChild.lVal == CHILDID_SELF; }

}  // namespace

AccessibleList::AccessibleList(ListWindow& lstDescribed) : lst(&lstDescribed) {
  ::CreateStdAccessibleObject(lst->Handle(), OBJID_CLIENT, __uuidof(IAccessible),
                              reinterpret_cast<void**>(&pWindow));
}

AccessibleList::~AccessibleList() {
  if (pWindow != nullptr) pWindow->Release();
}

void AccessibleList::Disconnect() { lst = nullptr; }

HRESULT AccessibleList::Check(const VARIANT& tChild) const {
  if (lst == nullptr || pWindow == nullptr) return CO_E_OBJNOTCONNECTED;
  const bool bThere = tChild.vt == VT_I4 && tChild.lVal >= 0 && tChild.lVal <= lst->LineCount();
  return bThere ? S_OK : E_INVALIDARG;
}

// ---- Interfaces ---------------------------------------------------------------------------------

HRESULT AccessibleList::QueryInterface(REFIID tInterface, void** pObject) {
  if (pObject == nullptr) return E_POINTER;
  const bool bKnown = ::IsEqualIID(tInterface, __uuidof(IUnknown)) != 0 ||
                      ::IsEqualIID(tInterface, __uuidof(IDispatch)) != 0 ||
                      ::IsEqualIID(tInterface, __uuidof(IAccessible)) != 0;
  *pObject = bKnown ? static_cast<IAccessible*>(this) : nullptr;
  if (!bKnown) return E_NOINTERFACE;
  AddRef();
  return S_OK;
}

ULONG AccessibleList::Release() {
  const ULONG lLeft = --lReferences;
  if (lLeft == 0) delete this;
  return lLeft;
}

HRESULT AccessibleList::GetTypeInfoCount(UINT* pCount) {
  *pCount = 0;
  return S_OK;
}

// ---- The list and its lines ---------------------------------------------------------------------

HRESULT AccessibleList::get_accParent(IDispatch** pParent) {
  *pParent = nullptr;
  const HRESULT lCheck = Check(NumberVariant(CHILDID_SELF));
  return lCheck == S_OK ? pWindow->get_accParent(pParent) : lCheck;
}

HRESULT AccessibleList::get_accChildCount(LONG* pCount) {
  *pCount = 0;
  const HRESULT lCheck = Check(NumberVariant(CHILDID_SELF));
  if (lCheck == S_OK) *pCount = lst->LineCount();
  return lCheck;
}

/// A line is no object of its own.
HRESULT AccessibleList::get_accChild(VARIANT tChild, IDispatch** pObject) {
  *pObject = nullptr;
  const HRESULT lCheck = Check(tChild);
  return lCheck == S_OK ? S_FALSE : lCheck;
}

HRESULT AccessibleList::get_accName(VARIANT tChild, BSTR* pName) {
  *pName = nullptr;
  const HRESULT lCheck = Check(tChild);
  if (lCheck != S_OK) return lCheck;
  if (IsSelf(tChild)) return pWindow->get_accName(tChild, pName);
  const std::string_view sLine = lst->Line(tChild.lVal - 1);
  *pName = ::SysAllocStringLen(nullptr, static_cast<UINT>(sLine.size()));
  if (*pName == nullptr) return E_OUTOFMEMORY;
  std::ranges::transform(sLine, *pName, [](char bCharacter) {
    const auto bCode = static_cast<unsigned char>(bCharacter);
    return static_cast<wchar_t>(IsShownAsMark(bCode) ? MARK_CHARACTER : bCode);
  });
  return S_OK;
}

HRESULT AccessibleList::get_accRole(VARIANT tChild, VARIANT* pRole) {
  *pRole = {};
  const HRESULT lCheck = Check(tChild);
  if (lCheck != S_OK) return lCheck;
  *pRole = NumberVariant(IsSelf(tChild) ? ROLE_SYSTEM_LIST : ROLE_SYSTEM_LISTITEM);
  return S_OK;
}

HRESULT AccessibleList::get_accState(VARIANT tChild, VARIANT* pState) {
  *pState = {};
  const HRESULT lCheck = Check(tChild);
  if (lCheck != S_OK) return lCheck;
  if (IsSelf(tChild)) return pWindow->get_accState(tChild, pState);
  LONG lState = STATE_SYSTEM_SELECTABLE | STATE_SYSTEM_FOCUSABLE;
  if (tChild.lVal - 1 == lst->SelectedIndex()) {
    lState |= STATE_SYSTEM_SELECTED;
    if (::GetFocus() == lst->Handle()) lState |= STATE_SYSTEM_FOCUSED;
  }
  if (!lst->Enabled()) lState |= STATE_SYSTEM_UNAVAILABLE;
  RECT tInside = {};
  ::GetClientRect(lst->Handle(), &tInside);
  const RECT tLine = lst->PlaceOfLine(tChild.lVal - 1);
  if (tLine.bottom <= 0 || tLine.top >= tInside.bottom)
    lState |= STATE_SYSTEM_OFFSCREEN | STATE_SYSTEM_INVISIBLE;
  *pState = NumberVariant(lState);
  return S_OK;
}

HRESULT AccessibleList::get_accFocus(VARIANT* pChild) {
  *pChild = {};
  const HRESULT lCheck = Check(NumberVariant(CHILDID_SELF));
  if (lCheck != S_OK) return lCheck;
  if (::GetFocus() != lst->Handle()) return S_FALSE;
  *pChild = NumberVariant(lst->SelectedIndex() + 1);  // the list itself where no line is selected
  return S_OK;
}

HRESULT AccessibleList::get_accSelection(VARIANT* pChild) {
  *pChild = {};
  const HRESULT lCheck = Check(NumberVariant(CHILDID_SELF));
  return lCheck == S_OK ? GiveLine(lst->SelectedIndex(), pChild) : lCheck;
}

HRESULT AccessibleList::accSelect(LONG lFlags, VARIANT tChild) {
  const HRESULT lCheck = Check(tChild);
  if (lCheck != S_OK) return lCheck;
  if (IsSelf(tChild)) return pWindow->accSelect(lFlags, tChild);
  constexpr LONG SELECTIONS = SELFLAG_TAKEFOCUS | SELFLAG_TAKESELECTION;
  if (!lst->Enabled() || lFlags == 0 || (lFlags & ~SELECTIONS) != 0) return E_INVALIDARG;
  if ((lFlags & SELFLAG_TAKEFOCUS) != 0) lst->SetFocus();
  if ((lFlags & SELFLAG_TAKESELECTION) != 0) lst->Choose(tChild.lVal - 1);
  return S_OK;
}

// ---- Places -------------------------------------------------------------------------------------

HRESULT AccessibleList::accLocation(LONG* pLeft, LONG* pTop, LONG* pWidth, LONG* pHeight,
                                    VARIANT tChild) {
  *pLeft = *pTop = *pWidth = *pHeight = 0;
  const HRESULT lCheck = Check(tChild);
  if (lCheck != S_OK) return lCheck;
  if (IsSelf(tChild)) return pWindow->accLocation(pLeft, pTop, pWidth, pHeight, tChild);
  const RECT tLine = lst->PlaceOfLine(tChild.lVal - 1);
  POINT tCorner = {tLine.left, tLine.top};
  ::ClientToScreen(lst->Handle(), &tCorner);
  *pLeft = tCorner.x;
  *pTop = tCorner.y;
  *pWidth = tLine.right - tLine.left;
  *pHeight = tLine.bottom - tLine.top;
  return S_OK;
}

HRESULT AccessibleList::accNavigate(LONG lDirection, VARIANT tChild, VARIANT* pEnd) {
  *pEnd = {};
  const HRESULT lCheck = Check(tChild);
  if (lCheck != S_OK) return lCheck;
  const std::int32_t lCount = lst->LineCount();
  const std::int32_t lLine = tChild.lVal - 1;
  if (IsSelf(tChild)) {
    if (lDirection == NAVDIR_FIRSTCHILD) return GiveLine(lCount > 0 ? 0 : -1, pEnd);
    if (lDirection == NAVDIR_LASTCHILD) return GiveLine(lCount - 1, pEnd);
    return pWindow->accNavigate(lDirection, tChild, pEnd);
  }
  if (lDirection == NAVDIR_NEXT || lDirection == NAVDIR_DOWN)
    return GiveLine(lLine + 1 < lCount ? lLine + 1 : -1, pEnd);
  if (lDirection == NAVDIR_PREVIOUS || lDirection == NAVDIR_UP) return GiveLine(lLine - 1, pEnd);
  return S_FALSE;
}

HRESULT AccessibleList::accHitTest(LONG lX, LONG lY, VARIANT* pChild) {
  *pChild = {};
  const HRESULT lCheck = Check(NumberVariant(CHILDID_SELF));
  if (lCheck != S_OK) return lCheck;
  POINT tPoint = {lX, lY};
  ::ScreenToClient(lst->Handle(), &tPoint);
  RECT tInside = {};
  ::GetClientRect(lst->Handle(), &tInside);
  if (::PtInRect(&tInside, tPoint) == 0) return S_FALSE;
  const std::int32_t lLine = lst->TopIndex() + tPoint.y / std::max(1, lst->ItemHeightPixels());
  *pChild = NumberVariant(lLine < lst->LineCount() ? lLine + 1 : CHILDID_SELF);
  return S_OK;
}

// ---- What a list has none of --------------------------------------------------------------------

HRESULT AccessibleList::get_accValue(VARIANT /*tChild*/, BSTR* pValue) {
  *pValue = nullptr;
  return DISP_E_MEMBERNOTFOUND;
}

HRESULT AccessibleList::get_accDescription(VARIANT /*tChild*/, BSTR* pDescription) {
  *pDescription = nullptr;
  return DISP_E_MEMBERNOTFOUND;
}

HRESULT AccessibleList::get_accHelp(VARIANT /*tChild*/, BSTR* pHelp) {
  *pHelp = nullptr;
  return DISP_E_MEMBERNOTFOUND;
}

HRESULT AccessibleList::get_accHelpTopic(BSTR* pFile, VARIANT /*tChild*/, LONG* pTopic) {
  *pFile = nullptr;
  *pTopic = 0;
  return DISP_E_MEMBERNOTFOUND;
}

HRESULT AccessibleList::get_accKeyboardShortcut(VARIANT /*tChild*/, BSTR* pKey) {
  *pKey = nullptr;
  return DISP_E_MEMBERNOTFOUND;
}

HRESULT AccessibleList::get_accDefaultAction(VARIANT /*tChild*/, BSTR* pAction) {
  *pAction = nullptr;
  return DISP_E_MEMBERNOTFOUND;
}

HRESULT AccessibleList::accDoDefaultAction(VARIANT /*tChild*/) { return DISP_E_MEMBERNOTFOUND; }

}  // namespace platform::win32
