#include <gtest/gtest.h>

#include "platform/Colors.h"

using namespace platform;

namespace {

constexpr Color BLACK{0, 0, 0};
constexpr Color WHITE{255, 255, 255};

TEST(ColorsTest, LinesCanBeReadAndToldApartInEveryTheme) {
  struct Case {
    const char* sTheme;
    ThemeColors tTheme;
    bool bKept;  // the theme's own selection serves as it is
  };
  const Case atCase[] = {
      {"Fusion's own: 3.7:1 on a selected line", {WHITE, BLACK, {48, 140, 198}, WHITE}, false},
      {"dark, light text on a light selection",
       {{35, 38, 41}, {239, 240, 241}, {61, 174, 233}, {239, 240, 241}},
       true},
      {"high contrast on black", {BLACK, WHITE, {26, 235, 255}, BLACK}, true},
      {"high contrast on white", {WHITE, BLACK, {55, 0, 110}, WHITE}, true},
      {"high contrast, dark selection on black", {BLACK, {255, 255, 0}, {0, 0, 255}, WHITE}, true},
      {"Windows' own", {WHITE, BLACK, {0, 120, 215}, WHITE}, false},
      {"a selection hardly darker than the list", {WHITE, BLACK, {205, 232, 255}, BLACK}, false},
      {"all of one grey",
       {{128, 128, 128}, {128, 128, 128}, {128, 128, 128}, {128, 128, 128}},
       false},
  };
  for (const Case& tCase : atCase) {
    SCOPED_TRACE(tCase.sTheme);
    const LineColors tPlain = LineColorsOf(tCase.tTheme, LineState::Plain);
    const LineColors tSelected = LineColorsOf(tCase.tTheme, LineState::Selected);
    const LineColors tAway = LineColorsOf(tCase.tTheme, LineState::SelectedAway);
    for (const LineColors& tLine : {tPlain, tSelected, tAway}) {
      EXPECT_GE(Contrast(tLine.tQuiet, tLine.tBack), READABLE);
      EXPECT_GE(Contrast(tLine.tText, tLine.tBack), Contrast(tLine.tQuiet, tLine.tBack));
    }
    EXPECT_GE(Contrast(tSelected.tText, tSelected.tBack), 1.3 * READABLE);
    EXPECT_GE(Contrast(tSelected.tBack, tPlain.tBack), 2);
    EXPECT_GE(Contrast(tAway.tBack, tPlain.tBack), 1.4);
    EXPECT_GE(Contrast(tAway.tBack, tSelected.tBack), 1.3);
    EXPECT_EQ(tPlain.tBack, tCase.tTheme.tBase);
    EXPECT_EQ(tSelected.tBack == tCase.tTheme.tHighlight, tCase.bKept);
  }
}

}  // namespace
