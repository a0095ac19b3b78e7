// The real windows on the real toolkit, timed until every list has drawn itself. QT_QPA_PLATFORM
// chooses where: offscreen, or xcb on a display.

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QCheckBox>
#include <QListView>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>

#include "disass/frmDisass.h"
#include "disass/frmDisassDesign.h"
#include "link/modALLSharedMap.h"
#include "platform/ToolkitFactory.h"

namespace {

/// Notes which lists have drawn themselves.
class PaintWatch : public QObject {
 public:
  std::set<QObject*> colDrawn;

 protected:
  bool eventFilter(QObject* pObject, QEvent* pEvent) override {
    if (pEvent->type() == QEvent::Paint && qobject_cast<QListView*>(pObject->parent()) != nullptr) {
      colDrawn.insert(pObject);
    }
    return false;
  }
};

PaintWatch tPaintWatch;

void RunUntilDrawn(std::size_t lLists) {
  while (tPaintWatch.colDrawn.size() < lLists) QCoreApplication::processEvents();
}

/// Windows over all 64 KB of one-byte instructions: 65,536 lines each.
std::vector<std::shared_ptr<frmDisass>> OpenWindows(std::int64_t lCount) {
  std::vector<std::shared_ptr<frmDisass>> afrm;
  for (std::int64_t lWindow = 0; lWindow < lCount; ++lWindow) {
    const auto frm = frmDisass::LoadNew();
    frm->WindowForm().Show();
    while (frm->LinesAndMaps().LineCount() == 0) QCoreApplication::processEvents();
    platform::FormEvents& tEvents = *frm;
    frm->WindowForm().TextBoxOf(frmDisassDesign::TXT_START).SetText("0000");
    tEvents.LostFocus(frmDisassDesign::TXT_START);
    frm->WindowForm().TextBoxOf(frmDisassDesign::TXT_END).SetText("FFFF");
    tEvents.LostFocus(frmDisassDesign::TXT_END);
    afrm.push_back(frm);
  }
  return afrm;
}

void CloseWindows(const std::vector<std::shared_ptr<frmDisass>>& afrm) {
  for (const auto& frm : afrm) frm->WindowForm().Unload();
}

void DisassembleAgainUntilDrawn(benchmark::State& tState) {
  const auto afrm = OpenWindows(1);
  for (auto tPass : tState) {
    tPaintWatch.colDrawn.clear();
    static_cast<platform::FormEvents&>(*afrm[0]).Click(frmDisassDesign::CMD_DISASS);
    RunUntilDrawn(1);
  }
  tState.counters["lines"] = afrm[0]->LinesAndMaps().LineCount();
  CloseWindows(afrm);
}
BENCHMARK(DisassembleAgainUntilDrawn)->Unit(benchmark::kMillisecond)->UseRealTime();

/// One typed instruction until all windows show it; every second one makes two lines of one or one
/// of two, so that all the lines behind it move.
void EnterUntilDrawn(benchmark::State& tState) {
  const auto afrm = OpenWindows(tState.range(0));
  for (QWidget* pWidget : QApplication::allWidgets()) {
    if (auto* chkLong = qobject_cast<QCheckBox*>(pWidget)) chkLong->setChecked(true);
  }
  platform::FormEvents& tEvents = *afrm[0];
  platform::Form& frmForm = afrm[0]->WindowForm();
  bool bLong = false;
  for (auto tPass : tState) {
    tState.PauseTiming();
    bLong = !bLong;
    for (const auto& frm : afrm) frm->position(false, 0x100);
    tEvents.DblClick(frmDisassDesign::LST_DIS);
    frmForm.TextBoxOf(frmDisassDesign::TXT_ASM).SetText(bLong ? "LD A,12" : "INC A");
    QCoreApplication::processEvents();
    tPaintWatch.colDrawn.clear();
    tState.ResumeTiming();
    tEvents.KeyDown(frmDisassDesign::TXT_ASM, 13);
    RunUntilDrawn(afrm.size());
  }
  CloseWindows(afrm);
}
BENCHMARK(EnterUntilDrawn)
    ->ArgName("windows")
    ->Arg(1)
    ->Arg(16)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

/// From the sixteenth window's load until it has listed and drawn 64 KB.
void OpenSixteenthUntilDrawn(benchmark::State& tState) {
  const auto afrm = OpenWindows(15);
  for (auto tPass : tState) {
    tPaintWatch.colDrawn.clear();
    const auto afrmLast = OpenWindows(1);
    RunUntilDrawn(1);
    tState.PauseTiming();
    CloseWindows(afrmLast);
    tState.ResumeTiming();
  }
  CloseWindows(afrm);
}
BENCHMARK(OpenSixteenthUntilDrawn)->Unit(benchmark::kMillisecond)->UseRealTime();

/// A temp folder with the names of blocks and events of this run alone.
void StandInForTheEmulator(const std::filesystem::path& tFolder) {
  std::filesystem::create_directories(tFolder / "VARNEL");
  std::ofstream tFile(tFolder / "VARNEL" / "VARNEL.tmp");
  tFile << "1\n";
  for (int lValue = 2; lValue <= 25; ++lValue) {
    tFile << '"' << tFolder.filename().string() << '-' << lValue << "\"\n";
  }
  setenv("TEMP", tFolder.c_str(), 1);
  setenv("LOCALAPPDATA", tFolder.c_str(), 1);
}

}  // namespace

int main(int argc, char** argv) {
  std::string sFolder = (std::filesystem::temp_directory_path() / "varnel-bench-XXXXXX").string();
  if (mkdtemp(sFolder.data()) == nullptr) return 1;
  StandInForTheEmulator(sFolder);
  benchmark::Initialize(&argc, argv);
  const auto pToolkit = platform::CreateToolkit(argc, argv);
  platform::SetToolkit(*pToolkit);
  qApp->installEventFilter(&tPaintWatch);
  benchmark::RunSpecifiedBenchmarks();
  std::filesystem::remove_all(sFolder);
  return 0;
}
