#pragma once

#include "platform/win32/WinHeaders.h"
// This needs windows.h before it.
#include <oleacc.h>

namespace platform::win32 {

class ListWindow;

/// A list as assistive tools meet it by Active Accessibility: each line is a child, by its index
/// counted from 1. What the system itself tells of a list box has no texts where the box keeps
/// none. Tools may hold on to it for longer than the list lives; it only answers then that it is
/// not connected. Only the user-interface thread calls it, on whatever tool's behalf.
class AccessibleList final : public IAccessible {
 public:
  /// The maker's is the first of the counted references; the last one's Release is its end.
  explicit AccessibleList(ListWindow& lstDescribed);
  virtual ~AccessibleList();
  AccessibleList(const AccessibleList&) = delete;
  AccessibleList& operator=(const AccessibleList&) = delete;
  /// Notes that the list is about to go.
  void Disconnect();

  // IUnknown
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID tInterface, void** pObject) override;
  ULONG STDMETHODCALLTYPE AddRef() override { return ++lReferences; }
  ULONG STDMETHODCALLTYPE Release() override;

  // IDispatch, for callers by name: there are none but those of C and C++
  HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* pCount) override;
  HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*,
                                   UINT*) override {
    return E_NOTIMPL;
  }

  // IAccessible
  HRESULT STDMETHODCALLTYPE get_accParent(IDispatch** pParent) override;
  HRESULT STDMETHODCALLTYPE get_accChildCount(LONG* pCount) override;
  HRESULT STDMETHODCALLTYPE get_accChild(VARIANT tChild, IDispatch** pObject) override;
  HRESULT STDMETHODCALLTYPE get_accName(VARIANT tChild, BSTR* pName) override;
  HRESULT STDMETHODCALLTYPE get_accValue(VARIANT tChild, BSTR* pValue) override;
  HRESULT STDMETHODCALLTYPE get_accDescription(VARIANT tChild, BSTR* pDescription) override;
  HRESULT STDMETHODCALLTYPE get_accRole(VARIANT tChild, VARIANT* pRole) override;
  HRESULT STDMETHODCALLTYPE get_accState(VARIANT tChild, VARIANT* pState) override;
  HRESULT STDMETHODCALLTYPE get_accHelp(VARIANT tChild, BSTR* pHelp) override;
  HRESULT STDMETHODCALLTYPE get_accHelpTopic(BSTR* pFile, VARIANT tChild, LONG* pTopic) override;
  HRESULT STDMETHODCALLTYPE get_accKeyboardShortcut(VARIANT tChild, BSTR* pKey) override;
  HRESULT STDMETHODCALLTYPE get_accFocus(VARIANT* pChild) override;
  HRESULT STDMETHODCALLTYPE get_accSelection(VARIANT* pChild) override;
  HRESULT STDMETHODCALLTYPE get_accDefaultAction(VARIANT tChild, BSTR* pAction) override;
  HRESULT STDMETHODCALLTYPE accSelect(LONG lFlags, VARIANT tChild) override;
  HRESULT STDMETHODCALLTYPE accLocation(LONG* pLeft, LONG* pTop, LONG* pWidth, LONG* pHeight,
                                        VARIANT tChild) override;
  HRESULT STDMETHODCALLTYPE accNavigate(LONG lDirection, VARIANT tChild, VARIANT* pEnd) override;
  HRESULT STDMETHODCALLTYPE accHitTest(LONG lX, LONG lY, VARIANT* pChild) override;
  HRESULT STDMETHODCALLTYPE accDoDefaultAction(VARIANT tChild) override;
  HRESULT STDMETHODCALLTYPE put_accName(VARIANT, BSTR) override { return DISP_E_MEMBERNOTFOUND; }
  HRESULT STDMETHODCALLTYPE put_accValue(VARIANT, BSTR) override { return DISP_E_MEMBERNOTFOUND; }

 private:
  /// S_OK for the list itself (CHILDID_SELF) and for a line that there is.
  HRESULT Check(const VARIANT& tChild) const;

  ULONG lReferences = 1;
  ListWindow* lst;                 // nullptr: disconnected
  IAccessible* pWindow = nullptr;  // what the system says of the list's window
};

}  // namespace platform::win32
