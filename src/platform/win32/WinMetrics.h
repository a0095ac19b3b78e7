#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "platform/Measures.h"
#include "platform/win32/WinHeaders.h"

/// Twips and pixels, text, and the fonts that fit a design into its places.
namespace platform::win32 {

/// Text of the process's code page, which the manifest makes UTF-8 where the system can (Windows 10
/// from version 1903 on), as Windows' own text. So does every call of Windows that takes such text.
std::wstring WideOf(std::string_view sText);

/// Twips a pixel, both ways: 15 at 96 dots per inch. One number for the whole process, because the
/// manifest asks for the resolution that the main screen had when the user logged on; on another
/// screen the system scales the picture.
double TwipsPerPixel();

/// Twips to whole pixels.
inline int PixelsOf(double dTwips) { return platform::PixelsOf(dTwips, TwipsPerPixel()); }

/// A place in pixels; a negative width or height becomes 0.
RECT PixelsOf(const TwipsRect& tPlace);

struct GdiDeleter {
  void operator()(void* hObject) const { ::DeleteObject(hObject); }
};
using OwnedFont = std::unique_ptr<std::remove_pointer_t<HFONT>, GdiDeleter>;
using OwnedBrush = std::unique_ptr<std::remove_pointer_t<HBRUSH>, GdiDeleter>;

/// A screen's drawing surface with a font in it, for measuring.
class MeasuringSurface {
 public:
  explicit MeasuringSurface(HFONT hFont);
  ~MeasuringSurface();
  MeasuringSurface(const MeasuringSurface&) = delete;
  MeasuringSurface& operator=(const MeasuringSurface&) = delete;

  int TextWidth(std::string_view sText) const;
  TEXTMETRICA Metrics() const;

 private:
  HDC hSurface;
  HGDIOBJ hBefore;
};

/// A font in which all captions fit their places, the first of: the user's message font and the
/// dialog font, at the size that designs are drawn for or a little smaller; the dialog font
/// narrowed.
OwnedFont FormFont(const FormDesign& tDesign);

/// The listing's bold fixed-pitch font, at most as large as the design's columns fit its width.
OwnedFont ListingFont(const FormDesign& tDesign);

/// The width of one character of a fixed-pitch font, in pixels.
int ColumnWidth(HFONT hFont);

}  // namespace platform::win32
