#include <gtest/gtest.h>
#include <sys/stat.h>

#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QFile>
#include <QInputMethodEvent>
#include <QLineEdit>
#include <QListView>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QMimeData>
#include <QPushButton>
#include <QScrollBar>
#include <QStyle>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <array>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "disass/frmDisassDesign.h"
#include "platform/Colors.h"
#include "platform/ToolkitFactory.h"
#include "platform/qt/QtPlacing.h"

using namespace frmDisassDesign;
using namespace platform;
using platform::qt::QtPlacing;

namespace {

using Log = std::vector<std::string>;

/// Writes down every event and does what the test has laid out for it.
struct Recorder final : FormEvents {
  Recorder(Log& asItsLog, std::map<std::string, std::function<void()>>& colItsDo)
      : asLog(asItsLog), colDo(colItsDo) {}

  void Hear(const char* sEvent, std::initializer_list<int> alValue = {}) {
    std::string sHeard = sEvent;
    for (const int lValue : alValue) sHeard += " " + std::to_string(lValue);
    asLog.push_back(sHeard);
    if (const auto itDo = colDo.find(sHeard); itDo != colDo.end()) std::function(itDo->second)();
  }

  void Load(Form& frmLoaded) override { frm = &frmLoaded, Hear("Load"); }
  void Activate() override { Hear("Activate"); }
  void Resize() override { Hear("Resize"); }
  void Timer() override { Hear("Timer"); }
  void QueryUnload() override { Hear("QueryUnload"); }
  void Click(std::int16_t iControl) override { Hear("Click", {iControl}); }
  void DblClick(std::int16_t iControl) override { Hear("DblClick", {iControl}); }
  void GotFocus(std::int16_t iControl) override { Hear("GotFocus", {iControl}); }
  void LostFocus(std::int16_t iControl) override { Hear("LostFocus", {iControl}); }
  bool KeyDown(std::int16_t iControl, std::int16_t iKeyCode) override {
    Hear("KeyDown", {iControl, iKeyCode});
    return iControl == TXT_ASM && iKeyCode == 13;
  }
  /// Hexadecimal digits in upper case, control characters but Ctrl+C.
  std::int32_t KeyPress(std::int16_t iControl, std::int32_t lCharacter) override {
    Hear("KeyPress", {iControl, lCharacter});
    if (lCharacter < 0x20) return lCharacter == 3 ? 0 : lCharacter;
    return lCharacter < 0x80 && std::isxdigit(lCharacter) != 0 ? std::toupper(lCharacter) : 0;
  }
  void MouseUp(std::int16_t iControl, std::int16_t iButton, std::int16_t iShift, double dX,
               double dY) override {
    Hear("MouseUp", {iControl, iButton, iShift, static_cast<int>(dX), static_cast<int>(dY)});
  }
  void MenuClick(std::int16_t iMenu, std::int16_t iIndex) override {
    Hear("MenuClick", {iMenu, iIndex});
  }

  Log& asLog;
  std::map<std::string, std::function<void()>>& colDo;
  Form* frm = nullptr;
};

struct Lines final : ListLines {
  explicit Lines(std::size_t lCount) : asLine(lCount, "8000 21 41 42") {}
  std::int32_t LineCount() const override { return static_cast<std::int32_t>(asLine.size()); }
  std::string_view Line(std::int32_t lIndex) const override {
    return asLine.at(static_cast<std::size_t>(lIndex));
  }
  std::span<const ColumnRange> QuietColumns() const override { return atQuiet; }
  std::vector<std::string> asLine;
  std::array<ColumnRange, 1> atQuiet{{{5, 13}}};
};

std::vector<std::uintptr_t> auMessage;  // what the window procedure was told

std::intptr_t NoteScroll(std::uint32_t hWnd, std::uint32_t uMsg, std::uintptr_t wParam,
                         std::intptr_t lParam) {
  auMessage.push_back(uMsg);
  return TheToolkit().CallWindowProc(TheToolkit().GetProp(hWnd, "OLD"), hWnd, uMsg, wParam, lParam);
}

class QtToolkitTest : public testing::Test {
 protected:
  Recorder& LoadShown() {
    Recorder& tEvents = LoadUnseen();
    tEvents.frm->Show();
    EXPECT_TRUE(QTest::qWaitForWindowActive(&Widget(*tEvents.frm)));
    Pump();
    asLog.clear();
    return tEvents;
  }

  Recorder& LoadUnseen() {
    auto pEvents = std::make_shared<Recorder>(asLog, colDo);
    Recorder& tEvents = *pEvents;
    TheToolkit().LoadForm(FORM, std::move(pEvents));
    return tEvents;
  }

  void TearDown() override {
    for (const auto& pEvents : TheToolkit().LoadedForms())
      static_cast<Recorder&>(*pEvents).frm->Unload();
    Pump();
  }

  static void Pump() {
    for (int lRound = 0; lRound < 10; ++lRound) QTest::qWait(1);
  }
  static QWidget& Widget(Form& frm) { return dynamic_cast<QWidget&>(frm); }
  template <class Kind>
  static Kind& Child(Form& frm, const char* sName) {
    return *Widget(frm).findChild<Kind*>(sName);
  }
  void After(int lMilliseconds, const std::function<void()>& fnDo) {
    QTimer& tmrOnce = atmrOnce.emplace_back();
    tmrOnce.setSingleShot(true);
    QObject::connect(&tmrOnce, &QTimer::timeout, &tmrOnce, fnDo);
    tmrOnce.start(lMilliseconds);
  }
  bool Heard(const char* sEvent) const {
    return std::find(asLog.begin(), asLog.end(), sEvent) != asLog.end();
  }

  Log asLog;
  std::map<std::string, std::function<void()>> colDo;
  std::deque<QTimer> atmrOnce;
};

TEST_F(QtToolkitTest, UnloadedInsideItsOwnHandlers) {
  struct Case {
    const char* sName;
    std::function<std::int32_t(Form&)> fnWait;
    std::int32_t lAnswer;
  };
  const auto fnBox = [](std::int32_t lStyle) {
    return [lStyle](Form&) { return TheToolkit().MessageBox("?", lStyle, "Title"); };
  };
  const std::vector<Case> atCase = {
      {"at once", [](Form& frm) { return frm.Unload(), 0; }, 0},
      {"events",
       [this](Form&) {
         while (!Heard("QueryUnload")) TheToolkit().DoEvents();
         return 0;
       },
       0},
      {"OK", fnBox(48), 1},
      {"OK and Cancel", fnBox(33), 2},
      {"Yes and No", fnBox(36), 7},
      {"menu", [](Form& frm) { return frm.ShowPopupMenu(MNU_DIS_POPUP, std::nullopt), 0; }, 0},
      {"file", [](Form& frm) { return static_cast<std::int32_t>(frm.ShowFileDialog({}).eOutcome); },
       static_cast<std::int32_t>(FileDialogResult::Outcome::Cancelled)},
  };
  for (const Case& tCase : atCase) {
    SCOPED_TRACE(tCase.sName);
    Recorder& tEvents = LoadShown();
    Form& frm = *tEvents.frm;
    const std::weak_ptr<FormEvents> pEvents = TheToolkit().LoadedForms().front();
    bool bDone = false;
    colDo["Timer"] = [&]() { frm.Unload(); };
    colDo["QueryUnload"] = [&]() {
      frm.Unload();  // already under way
      EXPECT_EQ(TheToolkit().LoadedForms().size(), 1U);
    };
    colDo["Click 4"] = [&]() {
      frm.SetTimerEnabled(true);
      EXPECT_EQ(tCase.fnWait(frm), tCase.lAnswer);
      EXPECT_TRUE(TheToolkit().LoadedForms().empty());
      Pump();
      EXPECT_FALSE(pEvents.expired());
      frm.Show();
      frm.SetTop(1500);
      frm.ListBoxOf(LST_DIS).SetSelectedIndex(0);
      frm.ControlOf(TXT_START).SetFocus();
      EXPECT_EQ(TheToolkit().MessageBox("?", 36, ""), 7);
      EXPECT_FALSE(Widget(frm).isVisible());
      bDone = true;
    };
    QTest::mouseClick(&Child<QPushButton>(frm, "cmdDisass"), Qt::LeftButton);
    EXPECT_TRUE(bDone);
    Pump();
    EXPECT_TRUE(pEvents.expired());
    EXPECT_EQ(asLog.back(), "QueryUnload");
    EXPECT_EQ(std::count(asLog.begin(), asLog.end(), "QueryUnload"), 1);
  }
}

TEST_F(QtToolkitTest, MessageBoxIsModalToItsFormAlone) {
  Recorder& tOwner = LoadShown();
  Recorder& tOther = LoadShown();
  colDo["Timer"] = [&]() {
    colDo.clear();
    auto* pBox = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
    ASSERT_NE(pBox, nullptr);
    EXPECT_EQ(pBox->parentWidget(), &Widget(*tOwner.frm));
    EXPECT_EQ(pBox->text(), "<b>1\n\n2 & 3");
    EXPECT_EQ(pBox->textFormat(), Qt::PlainText);
    EXPECT_EQ(pBox->icon(), QMessageBox::Warning);
    EXPECT_EQ(pBox->windowTitle(), "Varnel - Error");
    QWindow* pOther = Widget(*tOther.frm).windowHandle();
    const auto& cmd = Child<QPushButton>(*tOther.frm, "cmdDisass");
    QTest::mouseClick(pOther, Qt::LeftButton, {}, cmd.mapTo(cmd.window(), QPoint(5, 5)));
    pBox->close();
  };
  colDo["Click 5"] = [&]() {
    tOther.frm->SetTimerEnabled(true);
    TheToolkit().MessageBox("<b>1\r\n\r\n2 & 3", 48, "Varnel - Error");
  };
  QTest::mouseClick(&Child<QCheckBox>(*tOwner.frm, "chkAllow"), Qt::LeftButton);
  EXPECT_TRUE(Heard("Click 4"));
  EXPECT_TRUE(tOwner.frm->CheckBoxOf(CHK_ALLOW).Checked());
}

TEST_F(QtToolkitTest, TheSessionsEndUnloadsAllFormsWhateverIsOpen) {
  Form& frm = *LoadShown().frm;
  LoadShown();
  colDo["Timer"] = [&]() {
    colDo.clear();
    QEvent tEnd(QEvent::Quit);  // as from a session manager that has saved the session
    QCoreApplication::sendEvent(qApp, &tEnd);
  };
  colDo["Click 5"] = [&]() {
    frm.SetTimerEnabled(true);
    EXPECT_EQ(TheToolkit().MessageBox("?", 36, ""), 7);
  };
  QTest::mouseClick(&Child<QCheckBox>(frm, "chkAllow"), Qt::LeftButton);
  EXPECT_TRUE(TheToolkit().LoadedForms().empty());
  EXPECT_EQ(std::count(asLog.begin(), asLog.end(), "QueryUnload"), 2);
  // To Qt the program has ended: dialogs of later tests would not wait before it begins again.
  After(0, [] { QCoreApplication::exit(); });
  QCoreApplication::exec();
}

TEST_F(QtToolkitTest, FileNamesAreTakenAsTyped) {
  const QTemporaryDir tFolder;
  Form& frm = *LoadShown().frm;
  FileDialogRequest tRequest;
  tRequest.bSave = true;
  for (const QString sName : {"plain.txt", "q\"uote.txt", "\"both\"", "\"one\" \"two\"", "end\"",
                              " blanks ", "back\\slash"}) {
    const QString sPath = tFolder.filePath(sName);
    After(50, [&] {
      QWidget* pDialog = QApplication::activeModalWidget();
      ASSERT_NE(pDialog, nullptr);
      auto* txtName = pDialog->findChild<QLineEdit*>("fileNameEdit");
      txtName->setText(sPath);
      QTest::keyClick(txtName, Qt::Key_Return);
    });
    const FileDialogResult tResult = frm.ShowFileDialog(tRequest);
    EXPECT_EQ(tResult.eOutcome, FileDialogResult::Outcome::Chosen) << sName.toStdString();
    EXPECT_EQ(tResult.sPath, sPath.toStdString());
  }
}

TEST_F(QtToolkitTest, KeysOfTheDesignWorkWhereverTheFocusIs) {
  Recorder& tEvents = LoadShown();
  Form& frm = *tEvents.frm;
  Lines tLines(40);
  tLines.asLine.at(30) = "C000 00";
  frm.ListBoxOf(LST_DIS).SetLines(&tLines);
  frm.ControlOf(TXT_ASM).SetVisible(true);
  struct Case {
    const char* sWhat;
    Qt::Key eKey;
    Qt::KeyboardModifiers eModifiers;
    const char* sEvent;
  };
  for (const char* sFocus : {"txtStart", "txtAsm", "lstDis", "chkAllow"}) {
    for (const Case& tCase : {
             Case{"save", Qt::Key_S, Qt::ControlModifier, "MenuClick 1 0"},
             Case{"new window", Qt::Key_N, Qt::ControlModifier, "MenuClick 3 0"},
             Case{"list again", Qt::Key_F5, {}, "Click 4"},
         }) {
      SCOPED_TRACE(std::string(tCase.sWhat) + " in " + sFocus);
      auto& tWidget = Child<QWidget>(frm, sFocus);
      tWidget.setFocus();
      Pump();
      asLog.clear();
      QTest::keyClick(&tWidget, tCase.eKey, tCase.eModifiers);
      EXPECT_EQ(std::count(asLog.begin(), asLog.end(), tCase.sEvent), 1);
    }
  }
  // The key leaves an edited field first, as a click would; a disabled button hears nothing.
  auto& txtEnd = Child<QLineEdit>(frm, "txtEnd");
  for (const bool bEnabled : {true, false}) {
    frm.ControlOf(CMD_DISASS).SetEnabled(bEnabled);
    txtEnd.setFocus();
    Pump();
    asLog.clear();
    QTest::keyClick(&txtEnd, Qt::Key_F5);
    const Log asPressed = {"LostFocus 3", "GotFocus 4", "Click 4"};
    EXPECT_EQ(asLog, bEnabled ? asPressed : Log{});
  }
  // Alt and a menu's first letter open it.
  for (const auto& [eKey, sItem] : {std::pair(Qt::Key_F, "Save"), {Qt::Key_W, "Open new window"}}) {
    QString sOpen;
    After(30, [&] {
      if (auto* mnuOpen = qobject_cast<QMenu*>(QApplication::activePopupWidget())) {
        sOpen = mnuOpen->actions().constFirst()->text();
        mnuOpen->close();
      }
    });
    QTest::keyClick(&txtEnd, eKey, Qt::AltModifier);
    QTest::qWait(60);
    EXPECT_EQ(sOpen.toStdString(), sItem);
  }
  // In the listing the menu key asks the form, and a character leads to the next line that begins
  // with it.
  auto& lstView = Child<QListView>(frm, "lstDis");
  lstView.setFocus();
  Pump();
  asLog.clear();
  QTest::keyClick(&lstView, Qt::Key_Menu);
  QTest::keyClick(&lstView, Qt::Key_F10, Qt::ShiftModifier);
  EXPECT_EQ(std::count(asLog.begin(), asLog.end(), "KeyDown 8 93"), 2);
  ListBox& lst = frm.ListBoxOf(LST_DIS);
  lst.SetSelectedIndex(5);
  for (const auto& [sTyped, lLine] :
       {std::pair("8", 6), {"C", 30}, {"C", 30}, {"8", 31}, {"F", 31}}) {
    QTest::keyClicks(&lstView, sTyped);
    EXPECT_EQ(lst.SelectedIndex(), lLine) << sTyped;
  }
}

TEST_F(QtToolkitTest, TextThatIsPastedOrDropped) {
  struct Case {
    const char* sBefore;
    int lSelected;  // characters at the end
    const char* sPasted;
    const char* sAfter;
  };
  Form& frm = *LoadShown().frm;
  auto& txt = Child<QLineEdit>(frm, "txtEnd");
  const auto fnPaste = [&] {
    After(20, [&] {
      auto* mnuEdit = qobject_cast<QMenu*>(QApplication::activePopupWidget());
      ASSERT_NE(mnuEdit, nullptr);
      for (QAction* pItem : mnuEdit->actions()) {
        EXPECT_FALSE(pItem->text().contains('\t')) << pItem->text().toStdString();  // no keys
        if (pItem->text() == "&Paste") pItem->trigger();
      }
      mnuEdit->close();
    });
    QContextMenuEvent tMenu(QContextMenuEvent::Mouse, QPoint(5, 5), txt.mapToGlobal(QPoint(5, 5)));
    QApplication::sendEvent(&txt, &tMenu);
    QTest::qWait(60);
  };
  for (const Case& tCase : {
           Case{"8000", 4, " C000 ", "C000"},
           Case{"8000", 4, "C000  21 41 42\r\n", "C000"},
           Case{"8000", 4, " C0 ", "C0"},
           Case{"8000", 2, " C", "80 C"},  // inside other text a blank may be meant
           Case{"80", 0, " C000 ", "80C0"},
           Case{"8000", 0, "C", "8000"},
       }) {
    SCOPED_TRACE(tCase.sPasted);
    txt.setText(tCase.sBefore);
    txt.setSelection(static_cast<int>(txt.text().size()) - tCase.lSelected, tCase.lSelected);
    QApplication::clipboard()->setText(tCase.sPasted);
    fnPaste();
    EXPECT_EQ(txt.text().toStdString(), tCase.sAfter);
  }

  QMimeData tDropped;
  tDropped.setText(" C000 ");
  for (const bool bFull : {true, false}) {
    txt.setText(bFull ? "8000" : "");
    const QImage tBefore = txt.grab().toImage();
    QDragEnterEvent tEnter(QPoint(5, 5), Qt::CopyAction, &tDropped, Qt::LeftButton, {});
    QApplication::sendEvent(&txt, &tEnter);
    EXPECT_EQ(tEnter.isAccepted(), !bFull);
    if (bFull) {
      EXPECT_EQ(txt.grab().toImage(), tBefore);  // no mark of where it would go
      continue;
    }
    QDropEvent tDrop(QPointF(5, 5), Qt::CopyAction, &tDropped, Qt::LeftButton, {});
    QApplication::sendEvent(&txt, &tDrop);
    EXPECT_EQ(txt.text(), "C000");
  }
}

TEST_F(QtToolkitTest, ListKeepsSelectionAndTopWithTheirLines) {
  struct Case {
    int lFirst, lRemoved, lInserted, lSelected, lTop, lNewSelected, lNewTop;
  };
  ListBox& lst = LoadShown().frm->ListBoxOf(LST_DIS);
  for (const Case& tCase : {
           Case{500, 1, 3, 100, 90, 100, 90},  // behind
           Case{10, 1, 3, 100, 90, 102, 92},   // in front
           Case{100, 2, 1, 100, 90, 100, 90},  // the selected line itself
           Case{99, 3, 0, 100, 90, -1, 90},
           Case{80, 15, 2, 10, 90, 10, 81},  // the top line
           Case{0, 1000, 2, 100, 90, 1, 0},
           Case{1000, 0, 64536, 999, 900, 999, 900},
       }) {
    SCOPED_TRACE(testing::Message() << tCase.lFirst << " " << tCase.lRemoved);
    Lines tLines(1000);
    lst.SetLines(&tLines);
    lst.SetTopIndex(tCase.lTop);
    lst.SetSelectedIndex(tCase.lSelected);
    EXPECT_EQ(asLog, Log{"Click 8"});
    asLog.clear();
    const int lCount = 1000 - tCase.lRemoved + tCase.lInserted;
    tLines.asLine.resize(static_cast<std::size_t>(lCount), "new");
    lst.LinesReplaced(tCase.lFirst, tCase.lRemoved, tCase.lInserted);
    EXPECT_EQ(lst.SelectedIndex(), tCase.lNewSelected);
    EXPECT_EQ(lst.TopIndex(), tCase.lNewTop);
    Pump();
    EXPECT_EQ(asLog, Log{});
    lst.SetLines(nullptr);
  }
}

TEST_F(QtToolkitTest, ListByWheelAndKeys) {
  Recorder& tEvents = LoadShown();
  ListBox& lst = tEvents.frm->ListBoxOf(LST_DIS);
  auto& lstView = Child<QListView>(*tEvents.frm, "lstDis");
  QWidget* pView = lstView.viewport();
  Lines tLines(1000);
  lst.SetLines(&tLines);
  const int lPage = lstView.height() / lst.ItemHeightPixels();
  lst.SetTopIndex(5000);
  EXPECT_EQ(lst.TopIndex(), 1000 - lPage);

  const std::uint32_t hWnd = lst.WindowHandle();
  TheToolkit().SetProp(hWnd, "OLD", TheToolkit().SetWindowProc(hWnd, NoteScroll));
  auMessage.clear();
  lst.SetTopIndex(100);
  lst.SetTopIndex(100);  // no scroll
  QWheelEvent tTurn(QPointF(5, 5), pView->mapToGlobal(QPointF(5, 5)), {}, {0, -120}, {}, {},
                    Qt::NoScrollPhase, false);
  QApplication::sendEvent(pView, &tTurn);
  EXPECT_EQ(auMessage, (std::vector<std::uintptr_t>{0x115, 0x20A}));
  EXPECT_EQ(lst.TopIndex(), 103);
  lst.SetTopIndex(100);

  lst.SetSelectedIndex(103);
  lstView.setFocus();
  Pump();
  for (const auto& [eKey, lTo, lTop] : {std::tuple{Qt::Key_Up, 102, 100},
                                        {Qt::Key_PageUp, 102 - lPage + 1, 102 - lPage + 1},
                                        {Qt::Key_Home, 0, 0},
                                        {Qt::Key_PageDown, lPage - 1, 0},
                                        {Qt::Key_End, 999, 1000 - lPage}}) {
    asLog.clear();
    QTest::keyClick(&lstView, eKey);
    EXPECT_EQ(lst.SelectedIndex(), lTo) << eKey;
    EXPECT_EQ(lst.TopIndex(), lTop) << eKey;
    EXPECT_EQ(asLog.back(), "Click 8");
  }
}

TEST_F(QtToolkitTest, ListDrawsEveryByteInAColumnOfItsOwn) {
  Recorder& tEvents = LoadShown();
  ListBox& lst = tEvents.frm->ListBoxOf(LST_DIS);
  auto& lstView = Child<QListView>(*tEvents.frm, "lstDis");
  Lines tLines(5);
  tLines.asLine = {std::string("\0A\x9F\xE4\xAD"
                               "B",
                               6),
                   " A \xE4 B", "      ", "0000", ""};
  lst.SetLines(&tLines);
  const double dColumn = lst.TextWidth("0") / 15;
  const QImage tDrawn = lstView.viewport()->grab().toImage();
  const auto tCell = [&](int lLine, int lColumn) {
    const int lHeight = lst.ItemHeightPixels();
    return tDrawn.copy(4 - 1 + static_cast<int>(lColumn * dColumn) + 1, 2 - 1 + lLine * lHeight,
                       static_cast<int>(dColumn) - 1, lHeight);
  };
  for (const int lColumn : {1, 3, 5}) EXPECT_EQ(tCell(0, lColumn), tCell(1, lColumn)) << lColumn;
  for (const int lColumn : {0, 2, 4}) EXPECT_NE(tCell(0, lColumn), tCell(2, lColumn)) << lColumn;
  EXPECT_EQ(lstView.model()->index(0, 0).data().toString(), QString::fromLatin1("\xB7"
                                                                                "A\xB7\xE4\xB7"
                                                                                "B"));

  // The design's columns fit, at the size of the design's width and no wider than its longest line.
  tLines.asLine.assign(1000, std::string(static_cast<std::size_t>(FORM.iListingColumns), 'W'));
  lst.Move({120, 1140, FORM.lListingWidth, 3000});
  lst.SetLines(&tLines);
  Pump();
  EXPECT_EQ(lstView.horizontalScrollBar()->maximum(), 0);
  EXPECT_EQ(lstView.font(), Child<QLineEdit>(*tEvents.frm, "txtAsm").font());
  tLines.asLine.at(500) = std::string(131072, 'W') + " ";
  lst.LinesReplaced(500, 1, 1);
  EXPECT_NEAR(lstView.horizontalScrollBar()->maximum(), 131072 * dColumn - 380, 20);
  tLines.asLine.at(500) = "";
  lst.LinesReplaced(500, 1, 1);
  EXPECT_EQ(lstView.horizontalScrollBar()->maximum(), 0);
}

/// A picture's background, which most of it is, and the contrast to it of what stands out most.
std::pair<QRgb, double> SeenOn(const QImage& tPicture) {
  std::map<QRgb, int> colCount;
  for (int lY = 0; lY < tPicture.height(); ++lY) {
    for (int lX = 0; lX < tPicture.width(); ++lX) ++colCount[tPicture.pixel(lX, lY)];
  }
  const auto fnColor = [](QRgb lColor) {
    return Color{static_cast<std::uint8_t>(qRed(lColor)), static_cast<std::uint8_t>(qGreen(lColor)),
                 static_cast<std::uint8_t>(qBlue(lColor))};
  };
  const QRgb lBack =
      std::max_element(colCount.begin(), colCount.end(), [](const auto& tOne, const auto& tOther) {
        return tOne.second < tOther.second;
      })->first;
  double dContrast = 1;
  for (const auto& [lColor, lPixels] : colCount)
    dContrast = std::max(dContrast, Contrast(fnColor(lColor), fnColor(lBack)));
  return {lBack, dContrast};
}

/// Themes as users have them, with text on the selection and on what is disabled that cannot be
/// read there.
std::vector<std::pair<const char*, QPalette>> Themes() {
  QPalette tDark(QColor(49, 54, 59));
  tDark.setColor(QPalette::Base, QColor(35, 38, 41));
  tDark.setColor(QPalette::Highlight, QColor(61, 174, 233));
  tDark.setColor(QPalette::HighlightedText, QColor(239, 240, 241));
  QPalette tHighContrast(Qt::white, Qt::black, Qt::white, Qt::black, Qt::black, Qt::white,
                         Qt::black);
  tHighContrast.setColor(QPalette::Highlight, QColor(26, 235, 255));
  tHighContrast.setColor(QPalette::HighlightedText, Qt::black);
  for (const auto eText : {QPalette::Text, QPalette::ButtonText, QPalette::WindowText})
    tHighContrast.setColor(QPalette::Disabled, eText, QColor(20, 20, 20));
  return {{"light", QApplication::style()->standardPalette()},
          {"dark", tDark},
          {"high contrast", tHighContrast}};
}

TEST_F(QtToolkitTest, AllCanBeReadAndOnlyWhatHasTheKeysLooksSoInEveryTheme) {
  QApplication::setCursorFlashTime(0);
  Form& frmOther = *LoadShown().frm;
  Form& frm = *LoadShown().frm;
  Lines tLines(3);
  frm.ListBoxOf(LST_DIS).SetLines(&tLines);
  frm.ListBoxOf(LST_DIS).SetSelectedIndex(1);
  for (const std::int16_t iField : {TXT_START, TXT_END}) frm.TextBoxOf(iField).SetText("8000");
  const auto fnPicture = [&](std::int16_t iControl) {
    return Child<QWidget>(frm, CONTROLS.at(static_cast<std::size_t>(iControl)).sName.data())
        .grab()
        .toImage();
  };
  // A line's address and, in the quieter shade, its bytes; its background.
  const auto fnLine = [&](int lLine) {
    auto& lst = Child<QListView>(frm, "lstDis");
    const QImage tDrawn =
        lst.viewport()->grab(lst.visualRect(lst.model()->index(lLine, 0))).toImage();
    const double dColumn = frm.ListBoxOf(LST_DIS).TextWidth("0") / 15;
    const auto fnColumns = [&](int lFirst, int lEnd) {
      return SeenOn(tDrawn.copy(3 + static_cast<int>(lFirst * dColumn), 0,
                                static_cast<int>((lEnd - lFirst) * dColumn), tDrawn.height()));
    };
    const auto [lBack, dText] = fnColumns(0, 4);
    const double dQuiet = fnColumns(5, 12).second;
    EXPECT_GE(dQuiet, READABLE);
    EXPECT_GT(dText, dQuiet);
    return lBack;
  };
  const std::vector<std::int16_t> aiFocusable = {TXT_START, TXT_END,  CMD_DISASS,
                                                 CHK_ALLOW, CHK_LONG, LST_DIS};
  for (const auto& [sTheme, tTheme] : Themes()) {
    SCOPED_TRACE(sTheme);
    QPalette tPalette = tTheme;
    QApplication::style()->polish(tPalette);
    QApplication::setPalette(tPalette);
    Pump();
    std::map<std::int16_t, QImage> colWithout;
    for (const std::int16_t iControl : aiFocusable) {
      frm.ControlOf(iControl == TXT_END ? TXT_START : TXT_END).SetFocus();
      Pump();
      colWithout[iControl] = fnPicture(iControl);
    }
    const QRgb lAway = fnLine(1);
    EXPECT_NE(lAway, fnLine(0));
    for (const std::int16_t iFocus : aiFocusable) {
      colDo["GotFocus " + std::to_string(iFocus)] = [&frm, iFocus]() {
        if (iFocus == TXT_START || iFocus == TXT_END) frm.TextBoxOf(iFocus).SelectAll();
      };
      frm.ControlOf(iFocus).SetFocus();
      Pump();
      for (const std::int16_t iControl : aiFocusable) {
        EXPECT_EQ(fnPicture(iControl) != colWithout[iControl], iControl == iFocus)
            << iControl << " while " << iFocus << " has the focus";
      }
      EXPECT_EQ(fnLine(1) != lAway, iFocus == LST_DIS);
      frmOther.SetFocus();
      Pump();
      EXPECT_EQ(fnPicture(iFocus), colWithout[iFocus]) << iFocus << " while another window is used";
      // As under a message box: the program gives the focus to another control meanwhile.
      const std::int16_t iNext = iFocus == LST_DIS ? CHK_LONG : LST_DIS;
      frm.ControlOf(iNext).SetFocus();
      frm.SetFocus();
      Pump();
      EXPECT_EQ(fnPicture(iFocus), colWithout[iFocus]) << iFocus << " when another one came back";
      // It may have lost the focus again before the form hears that it had it.
      frm.ControlOf(iFocus).SetFocus();
      frm.ControlOf(iNext).SetFocus();
      Pump();
      EXPECT_EQ(fnPicture(iFocus), colWithout[iFocus]) << iFocus << " when the focus has gone on";
    }
    for (const bool bEnabled : {true, false}) {
      for (const std::int16_t iControl : {TXT_START, CMD_DISASS, CHK_ALLOW}) {
        frm.ControlOf(iControl).SetEnabled(bEnabled);
        const QImage tPicture = fnPicture(iControl);
        EXPECT_GE(SeenOn(tPicture.copy(tPicture.rect().adjusted(20, 3, -3, -3))).second, READABLE)
            << iControl << " " << bEnabled;
        EXPECT_EQ(tPicture == colWithout[iControl], bEnabled);
        // Its frame, which is all there is of an empty check box.
        EXPECT_GE(SeenOn(tPicture.copy(0, 0, tPicture.width(), tPicture.height() / 2)).second, 2.5);
        frm.ControlOf(iControl).SetEnabled(true);
      }
    }
  }
  QApplication::setPalette(QApplication::style()->standardPalette());
  frm.ListBoxOf(LST_DIS).SetLines(nullptr);
}

TEST_F(QtToolkitTest, EditorHasAllSidesAtEveryScale) {
  Form& frm = *LoadShown().frm;
  auto& txtAsm = Child<QLineEdit>(frm, "txtAsm");
  frm.ControlOf(TXT_ASM).SetVisible(true);
  for (const double dScale : {1.0, 1.25, 1.5, 1.75, 2.0}) {
    QImage tPicture(txtAsm.size() * dScale, QImage::Format_RGB32);
    tPicture.setDevicePixelRatio(dScale);
    txtAsm.render(&tPicture);
    const int lRight = tPicture.width() - 1;
    const int lBottom = tPicture.height() - 1;
    const QRgb lInside = tPicture.pixel(lRight / 2, lBottom / 2);
    for (const QPoint& tSide : {QPoint(0, lBottom / 2), QPoint(lRight, lBottom / 2),
                                QPoint(lRight / 2, 0), QPoint(lRight / 2, lBottom)}) {
      EXPECT_NE(tPicture.pixel(tSide), lInside) << dScale << ": " << tSide.x() << " " << tSide.y();
    }
  }
}

TEST_F(QtToolkitTest, CaptionsFitTheirPlaces) {
  Form& frm = *LoadShown().frm;
  for (const ControlDesign& tControl : CONTROLS) {
    if (tControl.eKind != ControlKind::CheckBox && tControl.eKind != ControlKind::Label) continue;
    QWidget& tWidget = Child<QWidget>(frm, std::string(tControl.sName).c_str());
    EXPECT_LE(tWidget.sizeHint().width(), tWidget.width()) << tControl.sName;
    EXPECT_LE(tWidget.fontMetrics().height(), tWidget.height()) << tControl.sName;
  }
}

TEST_F(QtToolkitTest, TypedCharactersPassTheFilter) {
  Recorder& tEvents = LoadShown();
  TextBox& txt = tEvents.frm->TextBoxOf(TXT_START);
  auto& txtView = Child<QLineEdit>(*tEvents.frm, "txtStart");
  txt.SetText("C0");
  EXPECT_EQ(asLog, Log{});  // only typing is filtered
  QInputMethodEvent tInput;
  tInput.setCommitString("f\xDCz1");
  QApplication::sendEvent(&txtView, &tInput);
  EXPECT_EQ(txt.Text(), "C0F1");
  QTest::keyClick(&txtView, Qt::Key_Backspace);
  QTest::keyClicks(&txtView, "gab");  // at most four
  EXPECT_EQ(txt.Text(), "C0FA");

  QApplication::clipboard()->setText("kept");
  txt.SelectAll();
  QTest::keyClick(&txtView, Qt::Key_C, Qt::ControlModifier);
  EXPECT_EQ(QApplication::clipboard()->text(), "kept");  // dropped
  QTest::keyClick(&txtView, Qt::Key_X, Qt::ControlModifier);
  EXPECT_EQ(QApplication::clipboard()->text() + txtView.text(), "C0FA");  // as usual

  asLog.clear();
  auto& txtAsm = Child<QLineEdit>(*tEvents.frm, "txtAsm");
  for (const Qt::Key eKey : {Qt::Key_Return, Qt::Key_Escape, Qt::Key_Up, Qt::Key_Down})
    QTest::keyClick(&txtAsm, eKey);
  EXPECT_EQ(asLog,
            (Log{"KeyDown 9 13", "KeyDown 9 27", "KeyPress 9 27", "KeyDown 9 38", "KeyDown 9 40"}));
}

TEST_F(QtToolkitTest, FocusEventsComeLaterAndOnlyWithinTheForm) {
  Recorder& tEvents = LoadShown();
  Form& frm = *tEvents.frm;
  const auto Heard = [&](const std::function<void()>& fnAct) {
    asLog.clear();
    fnAct();
    EXPECT_EQ(asLog, Log{});  // not in the middle of the change
    Pump();
    return asLog;
  };
  frm.ControlOf(TXT_END).SetFocus();
  Pump();
  EXPECT_EQ(Heard([&]() { frm.ControlOf(LST_DIS).SetFocus(); }),
            (Log{"LostFocus 3", "GotFocus 8"}));
  // What the program disables or hides under the focus was not left by the user.
  EXPECT_EQ(Heard([&]() { frm.ControlOf(LST_DIS).SetVisible(false); }), Log{});
  QTest::keyClick(frm.ControlOf(TXT_END).Enabled() ? QApplication::focusWidget() : nullptr,
                  Qt::Key_Space);
  frm.ControlOf(TXT_START).SetFocus();
  EXPECT_EQ(Heard([&]() { frm.ControlOf(LST_DIS).SetVisible(true); }), (Log{"GotFocus 1"}));
  EXPECT_EQ(Heard([&]() {
              frm.ControlOf(TXT_START).SetEnabled(false);
              frm.ControlOf(TXT_START).SetEnabled(true);
            }),
            (Log{"GotFocus 8"}));
  frm.ControlOf(TXT_END).SetFocus();
  Pump();
  EXPECT_EQ(Heard([&]() {
              QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
              asLog.clear();
            }),
            (Log{"LostFocus 3", "GotFocus 4"}));
  asLog.clear();  // not even a click overtakes them
  const auto& cmd = Child<QPushButton>(frm, "cmdDisass");
  frm.ControlOf(TXT_END).SetFocus();
  QTest::mouseClick(cmd.window()->windowHandle(), Qt::LeftButton, {},
                    cmd.mapTo(cmd.window(), QPoint(5, 5)));
  EXPECT_EQ(asLog, (Log{"LostFocus 4", "GotFocus 3", "LostFocus 3", "GotFocus 4", "Click 4"}));
  LoadShown();  // while the focus is elsewhere, the program gives it to another control
  frm.ControlOf(TXT_END).SetFocus();
  asLog.clear();
  frm.SetFocus();
  Pump();
  EXPECT_EQ(asLog, (Log{"Activate", "GotFocus 3"}));
}

TEST_F(QtToolkitTest, MenuItemsComeAndGoEvenUnderTheirOwnClick) {
  Form& frm = *LoadShown().frm;
  QMenu* mnuWindow = Child<QMenuBar>(frm, "").actions().at(1)->menu();
  const auto asShown = [&]() {
    Log asText;
    for (const QAction* pItem : mnuWindow->actions()) {
      if (pItem->isVisible())
        asText.push_back((pItem->isChecked() ? "*" : "") + pItem->text().toStdString());
    }
    return asText;
  };
  for (const auto iIndex : std::to_array<std::int16_t>({2, 1, 15})) {
    frm.LoadMenuItem(MNU_WINDOW_ITEM, iIndex);
    frm.SetMenuCaption(MNU_WINDOW_ITEM, iIndex, std::to_string(iIndex));
    frm.SetMenuChecked(MNU_WINDOW_ITEM, iIndex, iIndex == 2);
    frm.SetMenuVisible(MNU_WINDOW_ITEM, iIndex, true);
  }
  colDo["MenuClick 5 2"] = [&]() {
    EXPECT_EQ(asShown(), (Log{"Open new window", "1", "*2", "15"}));  // a click changes no mark
    for (const auto iIndex : std::to_array<std::int16_t>({1, 2, 15, 9}))
      frm.UnloadMenuItem(MNU_WINDOW_ITEM, iIndex);
  };
  mnuWindow->actions().at(4)->trigger();
  EXPECT_EQ(asLog, Log{"MenuClick 5 2"});
  EXPECT_EQ(asShown(), Log{"Open new window"});
}

TEST_F(QtToolkitTest, PlaceStateAndResize) {
  Recorder& tEvents = LoadUnseen();
  Form& frm = *tEvents.frm;
  for (const double dFar : {1e12, -1e12}) {
    frm.SetTop(dFar);
    frm.SetWidth(dFar);
  }
  frm.SetTop(50);
  frm.SetLeft(300);
  frm.SetHeight(WINDOW_HEIGHT);
  frm.SetWidth(WINDOW_WIDTH);
  EXPECT_EQ(asLog, Log{"Load"});
  frm.Show();
  EXPECT_EQ(asLog.at(1), "Resize");
  Pump();
  EXPECT_EQ(frm.Place().dTop, 45);  // whole pixels
  EXPECT_EQ(frm.Place().dHeight, WINDOW_HEIGHT);
  asLog.clear();
  // A form that limits itself waits until it is known whether the window is being maximized.
  QTest::qWait(2 * QtPlacing::TICK_MS * QtPlacing::REST_TICKS);
  colDo["Resize"] = [&]() {
    if (frm.State() == WindowState::Normal && frm.Place().dWidth > 6000) frm.SetWidth(6000);
  };
  frm.SetState(WindowState::Maximized);
  frm.SetState(WindowState::Normal);
  Widget(frm).windowHandle()->resize(440, 300);
  Pump();
  EXPECT_GT(frm.Place().dWidth, 6000);
  QTest::qWait(2 * QtPlacing::TICK_MS * QtPlacing::REST_TICKS);
  EXPECT_EQ(frm.Place().dWidth, 6000);
  colDo.clear();
  frm.SetWidth(0);
  frm.SetHeight(-500);
  QTest::qWait(2 * QtPlacing::TICK_MS * QtPlacing::REST_TICKS);
  EXPECT_EQ(frm.InnerSize().lWidth, SMALLEST_WIDTH);
  EXPECT_EQ(frm.InnerSize().lHeight, SMALLEST_HEIGHT);
  for (const WindowState eState :
       {WindowState::Maximized, WindowState::Minimized, WindowState::Normal}) {
    asLog.clear();
    frm.SetState(eState);
    Pump();
    EXPECT_EQ(frm.State(), eState);
    EXPECT_TRUE(Heard("Resize"));
  }
}

TEST_F(QtToolkitTest, IconsAreLoadedOnce) {
  QTemporaryDir tFolder;
  const std::string sIcon = tFolder.filePath("icon.ico").toStdString();
  EXPECT_EQ(TheToolkit().LoadIcon(sIcon, {16, 16}), 0U);
  ASSERT_EQ(::mkfifo(sIcon.c_str(), 0600), 0);
  EXPECT_EQ(TheToolkit().LoadIcon(sIcon, {16, 16}), 0U) << "a pipe that nobody writes to";
  ASSERT_TRUE(QFile::remove(tFolder.filePath("icon.ico")));
  ASSERT_TRUE(QImage(32, 32, QImage::Format_RGB32).save(sIcon.c_str(), "ico"));
  const std::uint32_t hSmall = TheToolkit().LoadIcon(sIcon, {16, 16});
  EXPECT_EQ(TheToolkit().LoadIcon(sIcon, {16, 16}), hSmall);
  Form& frm = *LoadUnseen().frm;
  frm.SetIcon(IconKind::Small, hSmall);
  frm.SetIcon(IconKind::Big, TheToolkit().LoadIcon(sIcon, {32, 32}));
  EXPECT_EQ(Widget(frm).windowIcon().availableSizes().size(), 2);
}

/// The toolkit is there for as long as tests run.
class RealToolkit final : public testing::Environment {
 public:
  void SetUp() override {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    pToolkit = CreateToolkit(lArgc, asArgv.data());
    SetToolkit(*pToolkit);
  }
  void TearDown() override { pToolkit.reset(); }

 private:
  std::string sProgram = "qt_toolkit_test";
  int lArgc = 1;
  std::array<char*, 2> asArgv = {sProgram.data(), nullptr};
  std::unique_ptr<Toolkit> pToolkit;
};

[[maybe_unused]] const auto* const pRealToolkit =
    testing::AddGlobalTestEnvironment(new RealToolkit);

}  // namespace
