// What other programs of a Windows system do with the windows, through nothing but its own calls:
//   close             asks every window to close, as the task bar does
//   end-session       tells every window that the session ends; prints the milliseconds it took
//   hold PATH         keeps a file open for itself until its input ends; prints "held" first
//   lines             prints what a screen reader gets of the first window's listing: the number of
//                     lines, the selected one (from 1), the one at its middle, and every text
//   renamed           prints the next line of a listing whose text is told to have changed

#include <windows.h>
// These need windows.h before them.
#include <oleacc.h>

#include <cstdio>
#include <string>
#include <vector>

namespace {

template <class Visit>
void ForEachForm(Visit fnVisit) {
  for (HWND hForm = nullptr;
       (hForm = ::FindWindowExW(nullptr, hForm, L"VarnelForm", nullptr)) != nullptr;) {
    if (::IsWindowVisible(hForm) != 0) fnVisit(hForm);
  }
}

void EndSession() {
  std::vector<HWND> ahForm;
  ForEachForm([&](HWND hForm) { ahForm.push_back(hForm); });
  const ULONGLONG lStart = ::GetTickCount64();
  for (const HWND hForm : ahForm) ::SendMessageW(hForm, WM_QUERYENDSESSION, 0, 0);
  for (const HWND hForm : ahForm) ::SendMessageW(hForm, WM_ENDSESSION, TRUE, 0);
  std::printf("%llu\n", ::GetTickCount64() - lStart);
}

int Hold(const char* sPath) {
  if (::CreateFileA(sPath, GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr) ==
      INVALID_HANDLE_VALUE) {
    return 1;
  }
  std::puts("held");
  std::fflush(stdout);
  while (std::getchar() != EOF) continue;
  return 0;
}

VARIANT Child(LONG lChild) {
  VARIANT tChild = {};
  tChild.vt = VT_I4;
  tChild.lVal = lChild;
  return tChild;
}

std::string NameOf(IAccessible& tList, const VARIANT& tChild) {
  BSTR pName = nullptr;
  const HRESULT lResult = tList.get_accName(tChild, &pName);
  if (lResult != S_OK) return "error " + std::to_string(lResult);
  std::string sName(std::size_t{4} * ::SysStringLen(pName), '\0');
  const int lBytes =
      ::WideCharToMultiByte(CP_UTF8, 0, pName, static_cast<int>(::SysStringLen(pName)),
                            sName.data(), static_cast<int>(sName.size()), nullptr, nullptr);
  sName.resize(static_cast<std::size_t>(lBytes));
  ::SysFreeString(pName);
  return sName;
}

int PrintLines() {
  HWND hList = nullptr;
  ForEachForm([&](HWND hForm) {
    if (hList == nullptr) hList = ::FindWindowExW(hForm, nullptr, L"LISTBOX", nullptr);
  });
  IAccessible* pList = nullptr;
  const HRESULT lResult =
      ::AccessibleObjectFromWindow(hList, static_cast<DWORD>(OBJID_CLIENT), __uuidof(IAccessible),
                                   reinterpret_cast<void**>(&pList));
  if (lResult != S_OK) {
    std::printf("no list: window %p, result %lX\n", static_cast<void*>(hList), lResult);
    return 1;
  }
  LONG lCount = 0;
  VARIANT tSelected = {}, tHit = {};
  RECT tPlace = {};
  ::GetWindowRect(hList, &tPlace);
  pList->get_accChildCount(&lCount);
  pList->get_accSelection(&tSelected);
  pList->accHitTest((tPlace.left + tPlace.right) / 2, (tPlace.top + tPlace.bottom) / 2, &tHit);
  std::printf("%ld\n%ld\n%ld\n", lCount, tSelected.lVal, tHit.lVal);
  for (LONG lLine = 1; lLine <= lCount; ++lLine) std::puts(NameOf(*pList, Child(lLine)).c_str());
  pList->Release();
  return 0;
}

void CALLBACK OnRenamed(HWINEVENTHOOK, DWORD, HWND hWnd, LONG lObject, LONG lChild, DWORD, DWORD) {
  IAccessible* pObject = nullptr;
  VARIANT tChild = {};
  if (lObject != OBJID_CLIENT || lChild == CHILDID_SELF ||
      ::AccessibleObjectFromEvent(hWnd, static_cast<DWORD>(lObject), static_cast<DWORD>(lChild),
                                  &pObject, &tChild) != S_OK) {
    return;
  }
  std::puts(NameOf(*pObject, tChild).c_str());
  std::fflush(stdout);
  pObject->Release();
  ::PostQuitMessage(0);
}

void PrintRenamed() {
  ::SetWinEventHook(EVENT_OBJECT_NAMECHANGE, EVENT_OBJECT_NAMECHANGE, nullptr, OnRenamed, 0, 0,
                    WINEVENT_OUTOFCONTEXT);
  std::puts("watching");
  std::fflush(stdout);
  MSG tMessage = {};
  while (::GetMessageW(&tMessage, nullptr, 0, 0) > 0) ::DispatchMessageW(&tMessage);
}

}  // namespace

int main(int lArgc, char** asArgv) {
  const std::string sJob = lArgc > 1 ? asArgv[1] : "";
  ::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
  if (sJob == "close") {
    ForEachForm([](HWND hForm) { ::PostMessageW(hForm, WM_CLOSE, 0, 0); });
  } else if (sJob == "end-session") {
    EndSession();
  } else if (sJob == "hold" && lArgc > 2) {
    return Hold(asArgv[2]);
  } else if (sJob == "lines") {
    return PrintLines();
  } else if (sJob == "renamed") {
    PrintRenamed();
  } else {
    return 2;
  }
  return 0;
}
