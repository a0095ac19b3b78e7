#pragma once

#include <QFont>
#include <QKeySequence>
#include <QRect>
#include <QString>

#include "platform/Measures.h"

/// Twips and logical pixels, and the fonts that fit a design into its places.
namespace platform::qt {

/// UTF-8 text as the toolkit takes it.
inline QString TextOf(std::string_view sText) {
  return QString::fromUtf8(sText.data(), static_cast<qsizetype>(sText.size()));
}

double TwipsPerPixelX();  ///< 15 at 96 dots per inch
double TwipsPerPixelY();

/// Twips to whole logical pixels.
inline int PixelsX(double dTwips) { return platform::PixelsOf(dTwips, TwipsPerPixelX()); }
inline int PixelsY(double dTwips) { return platform::PixelsOf(dTwips, TwipsPerPixelY()); }

/// A designed key as the toolkit takes it; a virtual-key code is a letter, a digit or F1 to F24.
QKeySequence KeysOf(const KeyDesign& tKey);

/// A place in whole pixels; a negative width or height becomes 0.
QRect PixelsOf(const TwipsRect& tPlace);

/// The user's own font at the size that designs are drawn for, condensed as far as the longest
/// caption needs to fit its place.
QFont FormFont(const FormDesign& tDesign);

/// The listing's bold fixed-pitch font, at most as large as the design's columns fit its width.
QFont ListingFont(const FormDesign& tDesign);

/// The width of one character of a fixed-pitch font, in pixels and fractions.
double ColumnWidth(const QFont& tFont);

}  // namespace platform::qt
