#pragma once

#include <cstdint>

/// Colours that can be told apart and read, whatever theme the user has: worked out from the
/// theme's own, by the contrast that the Web Content Accessibility Guidelines define.
namespace platform {

struct Color {
  std::uint8_t bRed = 0;
  std::uint8_t bGreen = 0;
  std::uint8_t bBlue = 0;
  bool operator==(const Color&) const = default;
};

/// Least contrast at which the guidelines take text for readable.
inline constexpr double READABLE = 4.5;

/// The contrast of two colours: 1 for equal ones, 21 for black and white.
double Contrast(Color tOne, Color tOther);

/// The shade of a text's colour that steps back behind the text on the same background, as far as
/// it can still be read there.
Color QuietOn(Color tBack, Color tText);

/// The colour of a disabled control's text, which is readable, too: the theme's own, or else one
/// that is stronger than a quiet one, for the thin letters of forms reach their full colour in few
/// pixels only.
/// @param tText      the text of a control that is not disabled
/// @param tDisabled  the theme's own
Color DisabledOn(Color tBack, Color tText, Color tDisabled);

/// A frame's colour, made to stand out from the window that it stands on where it does not.
Color FrameOn(Color tWindow, Color tFrame);

/// What a theme has for lists and text boxes.
struct ThemeColors {
  Color tBase;
  Color tText;
  Color tHighlight;
  Color tHighlightedText;
};

enum class LineState : std::uint8_t {
  Plain,
  Selected,      ///< and the list has the keyboard
  SelectedAway,  ///< and the keyboard is elsewhere
};

/// What a list's line is drawn in.
struct LineColors {
  Color tBack;
  Color tText;
  Color tQuiet;  ///< of the parts that step back, see ListLines::QuietColumns
};

/// All three states can be told from each other, and all text on them can be read; a theme's own
/// colours stay where they do that.
LineColors LineColorsOf(const ThemeColors& tTheme, LineState eState);

}  // namespace platform
