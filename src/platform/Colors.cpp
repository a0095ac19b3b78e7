#include "platform/Colors.h"

#include <algorithm>
#include <cmath>

namespace platform {

namespace {

constexpr Color BLACK{0, 0, 0};
constexpr Color WHITE{255, 255, 255};

/// Least contrast at which the guidelines take a control's frame for visible.
constexpr double VISIBLE = 3;
/// Of text in thin letters.
constexpr double THIN = 6;
/// Of the text of a selected line with the keyboard: leaves room for a quieter shade.
constexpr double STRONG = 7;
/// Of a selected line's background to a plain one's, with the keyboard and without.
constexpr double STANDS_OUT = 2;
constexpr double SHOWS = 1.5;

double Luminance(Color tColor) {
  const auto fnPart = [](std::uint8_t bPart) {
    const double dPart = bPart / 255.0;
    return dPart <= 0.04045 ? dPart / 12.92 : std::pow((dPart + 0.055) / 1.055, 2.4);
  };
  return 0.2126 * fnPart(tColor.bRed) + 0.7152 * fnPart(tColor.bGreen) +
         0.0722 * fnPart(tColor.bBlue);
}

Color Mixed(Color tOne, Color tOther, double dShareOfOther) {
  const auto fnPart = [=](std::uint8_t bOne, std::uint8_t bOther) {
    return static_cast<std::uint8_t>(std::lround(bOne + (bOther - bOne) * dShareOfOther));
  };
  return {fnPart(tOne.bRed, tOther.bRed), fnPart(tOne.bGreen, tOther.bGreen),
          fnPart(tOne.bBlue, tOther.bBlue)};
}

/// The first colour on the way from one to another that has a contrast to a third; the other one
/// when none has.
Color OnTheWay(Color tFrom, Color tTo, Color tAgainst, double dContrast) {
  constexpr int STEPS = 16;
  for (int lStep = 0; lStep < STEPS; ++lStep) {
    const Color tMixed = Mixed(tFrom, tTo, static_cast<double>(lStep) / STEPS);
    if (Contrast(tMixed, tAgainst) >= dContrast) return tMixed;
  }
  return tTo;
}

/// Black or white, whichever can be told better from a colour; on any colour it can be read.
Color PoleFrom(Color tColor) {
  return Contrast(BLACK, tColor) > Contrast(WHITE, tColor) ? BLACK : WHITE;
}

Color ReadableOn(Color tBack, Color tText) {
  return OnTheWay(tText, PoleFrom(tBack), tBack, READABLE);
}

Color FaintOn(Color tBack, Color tText, double dContrast) {
  constexpr double MOST_OF_BACK = 0.45;
  return OnTheWay(Mixed(tText, tBack, MOST_OF_BACK), tText, tBack, dContrast);
}

LineColors LineOn(Color tBack, Color tWantedText) {
  const Color tText = ReadableOn(tBack, tWantedText);
  return {tBack, tText, QuietOn(tBack, tText)};
}

LineColors SelectedLine(const ThemeColors& tTheme) {
  const Color tPole = PoleFrom(tTheme.tBase);
  Color tBack = OnTheWay(tTheme.tHighlight, tPole, tTheme.tBase, STANDS_OUT);
  // A text that cannot be read there goes to the side of the plain lines' background, so that what
  // the selection gains in contrast to its text it gains to those, too.
  Color tText = tTheme.tHighlightedText;
  if (Contrast(tText, tBack) < READABLE) tText = tPole == BLACK ? WHITE : BLACK;
  const bool bLightText = Luminance(tText) > Luminance(tBack);
  tBack = OnTheWay(tBack, bLightText ? BLACK : WHITE, tText, STRONG);
  return LineOn(tBack, tText);
}

}  // namespace

double Contrast(Color tOne, Color tOther) {
  const auto [dDark, dLight] = std::minmax({Luminance(tOne), Luminance(tOther)});
  return (dLight + 0.05) / (dDark + 0.05);
}

Color QuietOn(Color tBack, Color tText) { return FaintOn(tBack, tText, READABLE); }

Color DisabledOn(Color tBack, Color tText, Color tDisabled) {
  return Contrast(tDisabled, tBack) >= READABLE ? tDisabled : FaintOn(tBack, tText, THIN);
}

Color FrameOn(Color tWindow, Color tFrame) {
  return OnTheWay(tFrame, PoleFrom(tWindow), tWindow, VISIBLE);
}

LineColors LineColorsOf(const ThemeColors& tTheme, LineState eState) {
  if (eState == LineState::Plain) return LineOn(tTheme.tBase, tTheme.tText);
  const LineColors tSelected = SelectedLine(tTheme);
  if (eState == LineState::Selected) return tSelected;
  constexpr double LEAST_OF_SELECTED = 0.3;
  constexpr double MOST_OF_SELECTED = 0.6;
  const auto fnPaler = [&](double dShare) { return Mixed(tTheme.tBase, tSelected.tBack, dShare); };
  return LineOn(
      OnTheWay(fnPaler(LEAST_OF_SELECTED), fnPaler(MOST_OF_SELECTED), tTheme.tBase, SHOWS),
      tTheme.tText);
}

}  // namespace platform
