#include "platform/qt/QtMetrics.h"

#include <QApplication>
#include <QFontDatabase>
#include <QFontMetricsF>
#include <QScreen>
#include <QStyle>
#include <algorithm>
#include <array>
#include <cmath>

#include "platform/ListText.h"

namespace platform::qt {

namespace {

constexpr double USUAL_DPI = 96;

constexpr int NARROWEST_STRETCH = 50;
constexpr int CHECK_BOX_MARGIN = 4;  // what styles leave beside a check box's caption, in pixels

constexpr double LISTING_POINTS_STEP = 0.25;

/// The width that a control's place leaves for its caption, in pixels.
double CaptionRoom(const ControlDesign& tControl) {
  const QStyle& tStyle = *QApplication::style();
  const int lWidth = PixelsX(tControl.tPlace.lWidth);
  switch (tControl.eKind) {
    case ControlKind::CheckBox:
      return lWidth - tStyle.pixelMetric(QStyle::PM_IndicatorWidth) -
             tStyle.pixelMetric(QStyle::PM_CheckBoxLabelSpacing) - CHECK_BOX_MARGIN;
    case ControlKind::Button:
      return lWidth - 2 * tStyle.pixelMetric(QStyle::PM_ButtonMargin);
    default:
      return lWidth;
  }
}

/// How much of the widest caption fits its place: 1 and more when all do.
double CaptionFit(const FormDesign& tDesign, const QFont& tFont) {
  const QFontMetricsF tMetrics(tFont);
  double dFit = 1;
  for (const ControlDesign& tControl : tDesign.atControl) {
    if (!ShowsCaption(tControl)) continue;
    const double dCaption = tMetrics.horizontalAdvance(TextOf(tControl.sCaption));
    dFit = std::min(dFit, CaptionRoom(tControl) / dCaption);
  }
  return dFit;
}

/// The wanted family, else the installed fixed-pitch one that comes nearest to it.
QString ListingFamily(std::string_view sWanted) {
  constexpr std::array<const char*, 4> asStandIn = {"Inconsolata", "Noto Sans Mono",
                                                    "DejaVu Sans Mono", "Liberation Mono"};
  if (QFontDatabase::hasFamily(TextOf(sWanted))) return TextOf(sWanted);
  const auto* pFound = std::ranges::find_if(
      asStandIn, [](const char* sFamily) { return QFontDatabase::hasFamily(sFamily); });
  return pFound != asStandIn.end() ? QString(*pFound)
                                   : QFontDatabase::systemFont(QFontDatabase::FixedFont).family();
}

}  // namespace

double TwipsPerPixelX() {
  const QScreen* pScreen = QGuiApplication::primaryScreen();
  return TWIPS_PER_INCH / (pScreen != nullptr ? pScreen->logicalDotsPerInchX() : USUAL_DPI);
}

double TwipsPerPixelY() {
  const QScreen* pScreen = QGuiApplication::primaryScreen();
  return TWIPS_PER_INCH / (pScreen != nullptr ? pScreen->logicalDotsPerInchY() : USUAL_DPI);
}

QKeySequence KeysOf(const KeyDesign& tKey) {
  constexpr int VK_F1 = 112;
  if (tKey.iKeyCode == 0) return {};
  const int lKey = tKey.iKeyCode < VK_F1 ? tKey.iKeyCode : Qt::Key_F1 + tKey.iKeyCode - VK_F1;
  return QKeySequence(tKey.bControl ? static_cast<int>(Qt::CTRL) | lKey : lKey);
}

QRect PixelsOf(const TwipsRect& tPlace) {
  return {PixelsX(tPlace.lLeft), PixelsY(tPlace.lTop), std::max(0, PixelsX(tPlace.lWidth)),
          std::max(0, PixelsY(tPlace.lHeight))};
}

QFont FormFont(const FormDesign& tDesign) {
  QFont tFont = QApplication::font("QWidget");
  tFont.setPointSizeF(FORM_POINTS);
  // A condensed face of the family may not be exactly as narrow as asked: the fit is measured.
  int lStretch = static_cast<int>(100 * CaptionFit(tDesign, tFont));
  while (lStretch < 100 && lStretch > NARROWEST_STRETCH) {
    tFont.setStretch(lStretch);
    if (CaptionFit(tDesign, tFont) >= 1) break;
    --lStretch;
  }
  return tFont;
}

QFont ListingFont(const FormDesign& tDesign) {
  const QStyle& tStyle = *QApplication::style();
  const double dRoom = PixelsX(tDesign.lListingWidth) - PixelsX(LIST_TEXT_LEFT) -
                       tStyle.pixelMetric(QStyle::PM_DefaultFrameWidth) -
                       tStyle.pixelMetric(QStyle::PM_ScrollBarExtent);
  QFont tFont(ListingFamily(tDesign.sListingFont));
  tFont.setStyleHint(QFont::Monospace);
  tFont.setFixedPitch(true);
  tFont.setBold(true);
  tFont.setStretch(QFont::Unstretched);  // said aloud, or a control would take its form's
  tFont.setKerning(false);
  // Horizontal hinting would round each character to whole pixels, losing up to half a pixel a
  // column.
  tFont.setHintingPreference(QFont::PreferVerticalHinting);
  double dPoints = tDesign.dListingPoints;
  tFont.setPointSizeF(dPoints);
  while (ColumnWidth(tFont) * tDesign.iListingColumns > dRoom &&
         dPoints > SMALLEST_LISTING_POINTS) {
    dPoints -= LISTING_POINTS_STEP;
    tFont.setPointSizeF(dPoints);
  }
  return tFont;
}

double ColumnWidth(const QFont& tFont) {
  constexpr int SAMPLE = 64;  // averages out what a font engine rounds per character
  return QFontMetricsF(tFont).horizontalAdvance(QString(SAMPLE, QLatin1Char('0'))) / SAMPLE;
}

}  // namespace platform::qt
