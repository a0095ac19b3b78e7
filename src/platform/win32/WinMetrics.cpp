#include "platform/win32/WinMetrics.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "platform/ListText.h"

namespace platform::win32 {

namespace {

constexpr double POINTS_PER_INCH = 72;

constexpr double SMALLEST_FORM_PART = 0.9;
constexpr const char* DIALOG_FONT = "MS Shell Dlg";

/// What a check box needs beside its box, and a button beside its caption, in pixels at 96 dpi.
constexpr int CHECK_BOX_GAP = 4;
constexpr int BUTTON_MARGINS = 8;

int PixelsPerInch() {
  static const int lPixels = [] {
    const HDC hScreen = ::GetDC(nullptr);
    const int lPerInch = ::GetDeviceCaps(hScreen, LOGPIXELSX);
    ::ReleaseDC(nullptr, hScreen);
    return lPerInch;
  }();
  return lPixels;
}

/// The height of a font's letters in pixels, as a LOGFONT has it.
LONG FontHeight(double dPoints) {
  return -std::lround(dPoints * PixelsPerInch() / POINTS_PER_INCH);
}

LOGFONTW FontOfFace(std::string_view sFace) {
  LOGFONTW tFont = {};
  tFont.lfCharSet = DEFAULT_CHARSET;
  ::lstrcpynW(static_cast<wchar_t*>(tFont.lfFaceName), WideOf(sFace).c_str(), LF_FACESIZE);
  return tFont;
}

int CALLBACK NoteFace(const LOGFONTW* /*pFont*/, const TEXTMETRICW* /*pMetrics*/, DWORD /*lKind*/,
                      LPARAM pFound) {
  *reinterpret_cast<bool*>(pFound) = true;
  return 0;
}

bool IsInstalled(std::string_view sFace) {
  LOGFONTW tFont = FontOfFace(sFace);
  bool bFound = false;
  const HDC hScreen = ::GetDC(nullptr);
  ::EnumFontFamiliesExW(hScreen, &tFont, NoteFace, reinterpret_cast<LPARAM>(&bFound), 0);
  ::ReleaseDC(nullptr, hScreen);
  return bFound;
}

/// The width that a control's place leaves for its caption.
int CaptionRoom(const ControlDesign& tControl) {
  const int lWidth = PixelsOf(tControl.tPlace.lWidth);
  switch (tControl.eKind) {
    case ControlKind::CheckBox:
      return lWidth - ::GetSystemMetrics(SM_CXMENUCHECK) - CHECK_BOX_GAP;
    case ControlKind::Button:
      return lWidth - BUTTON_MARGINS;
    default:
      return lWidth;
  }
}

bool CaptionsFit(const FormDesign& tDesign, HFONT hFont) {
  const MeasuringSurface tSurface(hFont);
  return std::ranges::all_of(tDesign.atControl, [&](const ControlDesign& tControl) {
    return !ShowsCaption(tControl) ||
           tSurface.TextWidth(tControl.sCaption) <= CaptionRoom(tControl);
  });
}

/// The wanted face, else the installed fixed-pitch one that comes nearest to it.
std::string ListingFace(std::string_view sWanted) {
  constexpr std::array<const char*, 3> asStandIn = {"Lucida Console", "DejaVu Sans Mono",
                                                    "Liberation Mono"};
  if (IsInstalled(sWanted)) return std::string(sWanted);
  const auto* const pFound = std::ranges::find_if(asStandIn, IsInstalled);
  return pFound != asStandIn.end() ? *pFound : "Courier New";
}

}  // namespace

std::wstring WideOf(std::string_view sText) {
  const auto lLength = static_cast<int>(sText.size());
  std::wstring sWide(
      static_cast<std::size_t>(::MultiByteToWideChar(CP_ACP, 0, sText.data(), lLength, nullptr, 0)),
      L'\0');
  ::MultiByteToWideChar(CP_ACP, 0, sText.data(), lLength, sWide.data(),
                        static_cast<int>(sWide.size()));
  return sWide;
}

double TwipsPerPixel() { return TWIPS_PER_INCH / PixelsPerInch(); }

RECT PixelsOf(const TwipsRect& tPlace) {
  const LONG lLeft = PixelsOf(tPlace.lLeft);
  const LONG lTop = PixelsOf(tPlace.lTop);
  return {lLeft, lTop, lLeft + std::max(0, PixelsOf(tPlace.lWidth)),
          lTop + std::max(0, PixelsOf(tPlace.lHeight))};
}

MeasuringSurface::MeasuringSurface(HFONT hFont)
    : hSurface(::GetDC(nullptr)), hBefore(::SelectObject(hSurface, hFont)) {}

MeasuringSurface::~MeasuringSurface() {
  ::SelectObject(hSurface, hBefore);
  ::ReleaseDC(nullptr, hSurface);
}

int MeasuringSurface::TextWidth(std::string_view sText) const {
  SIZE tSize = {};
  ::GetTextExtentPoint32A(hSurface, sText.data(), static_cast<int>(sText.size()), &tSize);
  return tSize.cx;
}

TEXTMETRICA MeasuringSurface::Metrics() const {
  TEXTMETRICA tMetrics = {};
  ::GetTextMetricsA(hSurface, &tMetrics);
  return tMetrics;
}

OwnedFont FormFont(const FormDesign& tDesign) {
  NONCLIENTMETRICSW tMetrics = {};
  tMetrics.cbSize = sizeof(tMetrics);
  ::SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, sizeof(tMetrics), &tMetrics, 0);
  LOGFONTW tDialog = FontOfFace(DIALOG_FONT);
  const LONG lFullHeight = FontHeight(FORM_POINTS);
  for (LONG lHeight = lFullHeight; lHeight <= SMALLEST_FORM_PART * lFullHeight; ++lHeight) {
    for (LOGFONTW tFont : {tMetrics.lfMessageFont, tDialog}) {
      tFont.lfHeight = lHeight;
      OwnedFont hFont(::CreateFontIndirectW(&tFont));
      if (CaptionsFit(tDesign, hFont.get())) return hFont;
    }
  }
  tDialog.lfHeight = lFullHeight;
  OwnedFont hFont(::CreateFontIndirectW(&tDialog));
  tDialog.lfWidth = MeasuringSurface(hFont.get()).Metrics().tmAveCharWidth;
  while (!CaptionsFit(tDesign, hFont.get()) && --tDialog.lfWidth > 0)
    hFont.reset(::CreateFontIndirectW(&tDialog));
  return hFont;
}

OwnedFont ListingFont(const FormDesign& tDesign) {
  const int lRoom = PixelsOf(tDesign.lListingWidth) - PixelsOf(LIST_TEXT_LEFT) -
                    ::GetSystemMetrics(SM_CXEDGE) - ::GetSystemMetrics(SM_CXVSCROLL);
  LOGFONTW tFont = FontOfFace(ListingFace(tDesign.sListingFont));
  tFont.lfWeight = FW_BOLD;
  tFont.lfPitchAndFamily = FIXED_PITCH | FF_MODERN;
  tFont.lfHeight = FontHeight(tDesign.dListingPoints);
  OwnedFont hFont(::CreateFontIndirectW(&tFont));
  while (ColumnWidth(hFont.get()) * tDesign.iListingColumns > lRoom &&
         tFont.lfHeight < FontHeight(SMALLEST_LISTING_POINTS)) {
    ++tFont.lfHeight;
    hFont.reset(::CreateFontIndirectW(&tFont));
  }
  return hFont;
}

int ColumnWidth(HFONT hFont) { return MeasuringSurface(hFont).TextWidth("0"); }

}  // namespace platform::win32
