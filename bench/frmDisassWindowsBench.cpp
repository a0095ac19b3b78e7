// The real windows on Windows, timed until no message waits any more: every list has drawn itself
// then. Prints medians in milliseconds; under Wine in the folder that WINEPREFIX names.

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>

#include "disass/frmDisass.h"
#include "disass/frmDisassDesign.h"
#include "platform/ToolkitFactory.h"
#include "platform/win32/WinHeaders.h"

namespace {

using namespace frmDisassDesign;  // NOLINT(google-build-using-namespace): the numbers are its use
using std::chrono::steady_clock;

constexpr int ROUNDS = 30;

void RunUntilIdle() {
  MSG tMessage = {};
  while (::PeekMessageW(&tMessage, nullptr, 0, 0, PM_REMOVE) != 0) {
    ::TranslateMessage(&tMessage);
    ::DispatchMessageW(&tMessage);
  }
  ::GdiFlush();
}

/// Does something again and again, each time prepared and timed until all is drawn.
void Measure(const char* sWhat, const std::function<void()>& fnPrepare,
             const std::function<void()>& fnDo) {
  std::vector<double> adMilliseconds;
  for (int lRound = 0; lRound < ROUNDS; ++lRound) {
    fnPrepare();
    RunUntilIdle();
    const auto tStart = steady_clock::now();
    fnDo();
    RunUntilIdle();
    adMilliseconds.push_back(
        std::chrono::duration<double, std::milli>(steady_clock::now() - tStart).count());
  }
  std::ranges::sort(adMilliseconds);
  std::cout << sWhat << ": " << adMilliseconds[ROUNDS / 2] << " ms, lowest "
            << adMilliseconds.front() << std::endl;
}

/// A window over all 64 KB of one-byte instructions, without questions.
std::shared_ptr<frmDisass> OpenWindow() {
  auto frm = frmDisass::LoadNew();
  frm->WindowForm().Show();
  while (frm->LinesAndMaps().LineCount() == 0) RunUntilIdle();
  platform::FormEvents& tEvents = *frm;
  for (const auto& [iField, sText] : {std::pair(TXT_START, "0000"), {TXT_END, "FFFF"}}) {
    frm->WindowForm().TextBoxOf(iField).SetText(sText);
    tEvents.LostFocus(iField);
  }
  const HWND hForm = ::GetActiveWindow();
  for (HWND h = nullptr; (h = ::FindWindowExA(hForm, h, "BUTTON", nullptr)) != nullptr;)
    ::SendMessageA(h, BM_SETCHECK, BST_CHECKED, 0);
  return frm;
}

void MeasureEnter(const char* sWhat, const std::vector<std::shared_ptr<frmDisass>>& afrm) {
  platform::FormEvents& tEvents = *afrm.front();
  bool bLong = false;  // every second time makes two lines of one, so that all behind it move
  Measure(
      sWhat,
      [&] {
        bLong = !bLong;
        for (const auto& frm : afrm) frm->position(false, 0x100);
        tEvents.DblClick(LST_DIS);
        afrm.front()->WindowForm().TextBoxOf(TXT_ASM).SetText(bLong ? "LD A,12" : "INC A");
      },
      [&] { tEvents.KeyDown(TXT_ASM, VK_RETURN); });
}

}  // namespace

int main(int argc, char** argv) {
  // A link of its own to a memory of zeros.
  const std::string sRun = "varnel-bench-" + std::to_string(::GetCurrentProcessId());
  const auto tFolder = std::filesystem::temp_directory_path() / sRun;
  std::filesystem::create_directories(tFolder / "VARNEL");
  std::ofstream tNames(tFolder / "VARNEL/VARNEL.tmp");
  tNames << 1;
  for (int lValue = 1; lValue < 25; ++lValue) tNames << ",\"" << sRun << lValue << '"';
  tNames.close();
  ::SetEnvironmentVariableW(L"TEMP", tFolder.c_str());
  ::SetEnvironmentVariableW(L"LOCALAPPDATA", tFolder.c_str());
  const auto pToolkit = platform::CreateToolkit(argc, argv);
  platform::SetToolkit(*pToolkit);

  std::vector afrm = {OpenWindow()};
  Measure(
      "Disassemble again, 65,536 lines", [] {},
      [&] { static_cast<platform::FormEvents&>(*afrm[0]).Click(CMD_DISASS); });
  MeasureEnter("Enter, 1 window", afrm);
  while (afrm.size() < 16) afrm.push_back(OpenWindow());
  MeasureEnter("Enter, 16 windows", afrm);
  for (const auto& frm : afrm) frm->WindowForm().Unload();
  std::filesystem::remove_all(tFolder);
}
