// The window on the real toolkit: what is typed there by its own keys.

#include <QApplication>
#include <QLineEdit>
#include <QListView>
#include <QPushButton>
#include <QScreen>
#include <QTest>
#include <QTimer>

#include "disass/WindowTest.h"

namespace {

class WindowOnQt : public RandomTyping {
 public:
  ~WindowOnQt() override {
    for (const auto& frm : afrm) frm->WindowForm().Unload();
    QTest::qWait(1);
  }

 protected:
  static void SetUpTestSuite() {
    pRealToolkit = &platform::TheToolkit();
    QApplication::setCursorFlashTime(0);
  }
  WindowOnQt() { platform::SetToolkit(*pRealToolkit); }

  static QWidget& Widget(frmDisass& frm) { return dynamic_cast<QWidget&>(frm.WindowForm()); }
  template <class Kind>
  static Kind& Child(frmDisass& frm, const char* sName) {
    return *Widget(frm).findChild<Kind*>(sName);
  }
  frmDisass& OpenOver(const char* sStart, const char* sEnd) {
    frmDisass& frm = *afrm.emplace_back(frmDisass::LoadNew());
    frm.WindowForm().Show();
    EXPECT_TRUE(QTest::qWaitForWindowActive(&Widget(frm)));
    EXPECT_TRUE(QTest::qWaitFor([&] { return frm.LinesAndMaps().LineCount() > 0; }));
    for (const auto& [sField, sText] :
         {std::pair("txtStart", sStart), {"txtEnd", sEnd}, {"lstDis", ""}}) {
      Child<QWidget>(frm, sField).setFocus();
      QTest::qWait(1);  // entered, it is selected
      QTest::keyClicks(QApplication::focusWidget(), sText);
    }
    EXPECT_LT(frm.LinesAndMaps().LineCount(), 0x50);
    return frm;
  }
  /// The listing is that of the memory, and the view shows it, the editor over its line.
  void ExpectShown(frmDisass& frm, int32_t lMargin) {
    const auto& tListing = frm.LinesAndMaps();
    const auto fnField = [&](const char* sName) {
      return static_cast<int32_t>(Child<QLineEdit>(frm, sName).text().toInt(nullptr, 16));
    };
    EXPECT_EQ(
        ListingFault(tListing, abMemoryImage, fnField("txtStart"), fnField("txtEnd"), lMargin), "");
    const auto& lst = Child<QListView>(frm, "lstDis");
    ASSERT_EQ(lst.model()->rowCount(), tListing.LineCount());
    for (int32_t lLine = 0; lLine < tListing.LineCount(); ++lLine) {
      ASSERT_EQ(lst.model()->index(lLine, 0).data().toString().left(40).toStdString(),
                tListing.Line(lLine).substr(0, 40));
    }
    const auto& txt = Child<QLineEdit>(frm, "txtAsm");
    const QRect tLine = lst.visualRect(lst.currentIndex());
    const QPoint tMiddle =
        lst.viewport()->mapFrom(&Widget(frm), txt.geometry().center() + txt.parentWidget()->pos());
    EXPECT_TRUE(!txt.isVisible() || std::abs(tMiddle.y() - tLine.center().y()) <= 2);
  }
  /// Nothing that stood in the list before is left on the screen.
  void ExpectDrawn(frmDisass& frm) {
    auto& lst = Child<QListView>(frm, "lstDis");
    const auto fnSeen = [&] {
      QTest::qWait(10);
      return lst.screen()->grabWindow(Widget(frm).winId()).toImage();
    };
    const QImage tSeen = fnSeen();
    ASSERT_FALSE(tSeen.isNull());
    lst.viewport()->update();
    EXPECT_EQ(fnSeen(), tSeen);
  }

  inline static platform::Toolkit* pRealToolkit = nullptr;
  std::vector<std::shared_ptr<frmDisass>> afrm;
};

TEST_F(WindowOnQt, RandomTypingKeepsListingAndViewInStep) {
  constexpr int EDITS = 250;
  OpenOver("8000", "8030");
  OpenOver("8011", "8050");
  OpenOver("FFF8", "FFFF");
  bool bYes = true;
  int lAsked = 0;
  QTimer tmrAnswer;
  QObject::connect(&tmrAnswer, &QTimer::timeout, [&] {
    if (QWidget* const pBox = QApplication::activeModalWidget()) {
      ++lAsked;
      QTest::keyClick(pBox, bYes ? Qt::Key_Y : Qt::Key_N, Qt::AltModifier);
    }
  });
  tmrAnswer.start(0);
  // A short list that loses lines from its first one on, with no question that would hide it.
  auto& chkLong = Child<QAbstractButton>(*afrm[2], "chkLong");
  chkLong.click();
  for (const int lFirst : {0xFFF8, 0x1FFF8}) std::fill_n(abRam + lFirst, 8, uint8_t{0});
  Child<QPushButton>(*afrm[2], "cmdDisass").click();
  QTest::keyClick(&Child<QListView>(*afrm[2], "lstDis"), Qt::Key_Return);
  ExpectDrawn(*afrm[2]);
  QTest::keyClicks(&Child<QLineEdit>(*afrm[2], "txtAsm"), "LD IX,0\r");
  EXPECT_EQ(afrm[2]->LinesAndMaps().LineCount(), 5);
  ExpectDrawn(*afrm[2]);
  chkLong.click();
  for (int lEdit = 0; lEdit < EDITS; ++lEdit) {
    frmDisass& frm = *afrm[Random(3)];
    const int32_t lLine = Random(250) % frm.LinesAndMaps().LineCount();
    const string sLine(frm.LinesAndMaps().Line(lLine));
    frm.WindowForm().SetFocus();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&Widget(frm)));
    platform::ListBox& lst = frm.WindowForm().ListBoxOf(LST_DIS);
    lst.SetTopIndex(lLine - Random(5));
    lst.SetSelectedIndex(lLine);
    auto& txt = Child<QLineEdit>(frm, "txtAsm");
    if (!txt.isVisible()) QTest::keyClick(&Child<QListView>(frm, "lstDis"), Qt::Key_Return);
    ASSERT_TRUE(txt.isVisible() && txt.hasFocus() && txt.hasSelectedText());
    const auto [sText, abWritten] = Invent(sLine);
    bYes = Random(4) != 0;
    lAsked = 0;
    std::vector<uint8_t> abExpected(abRam, abRam + 0x10000);
    QTest::keyClicks(&txt, sText.c_str());
    QTest::keyClick(&txt, Qt::Key_Return);
    for (int32_t lAt = modDISListing::LineAddress(sLine); const uint8_t bByte : abWritten) {
      if (bYes || lAsked == 0) abExpected[static_cast<size_t>(lAt++ & 0xFFFF)] = bByte;
    }
    ASSERT_TRUE(std::equal(abExpected.begin(), abExpected.end(), abRam))
        << sLine << " by " << sText;
    lst.SetTopIndex(lst.TopIndex() + Random(3));
    for (const auto& frmEach : afrm) ExpectShown(*frmEach, lEdit % 100 == 0 ? ADDRESS_SPACE : 16);
    if (lEdit % 4 == 0) ExpectDrawn(*afrm[Random(3)]);
    ASSERT_FALSE(HasFailure()) << "edit " << lEdit << " of " << sLine << " by " << sText;
    if (Random(3) == 0) QTest::keyClick(&txt, Qt::Key_Escape);
  }
}

}  // namespace
