#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "platform/Toolkit.h"

/// What toolkits have in common when they fit a design into pixels.
namespace platform {

inline constexpr double TWIPS_PER_INCH = 1440;

/// X11 and Windows keep coordinates in 16 bits of device pixels; half of it leaves room for
/// scaling.
inline constexpr double FARTHEST_PIXEL = 16000;

/// Twips to whole pixels, nearest; kept within what window systems take as a coordinate.
inline std::int32_t PixelsOf(double dTwips, double dTwipsPerPixel) {
  return static_cast<std::int32_t>(
      std::clamp(std::round(dTwips / dTwipsPerPixel), -FARTHEST_PIXEL, FARTHEST_PIXEL));
}

/// The size of the dialog font that places in twips are drawn around, on every Windows version.
inline constexpr double FORM_POINTS = 8.25;

/// Below it a listing cannot be read, and scrolls sideways.
inline constexpr double SMALLEST_LISTING_POINTS = 5;

/// Whether a control shows its caption, which must fit its place then.
constexpr bool ShowsCaption(const ControlDesign& tControl) {
  return tControl.eKind != ControlKind::TextBox && tControl.eKind != ControlKind::ListBox &&
         !tControl.sCaption.empty();
}

}  // namespace platform
