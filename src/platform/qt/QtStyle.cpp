#include "platform/qt/QtStyle.h"

#include <QStyleOption>
#include <tuple>

namespace platform::qt {

namespace {

Color ColorOf(const QColor& tColor) {
  return {static_cast<std::uint8_t>(tColor.red()), static_cast<std::uint8_t>(tColor.green()),
          static_cast<std::uint8_t>(tColor.blue())};
}

/// What makes Fusion draw a part so that it can be seen, on a part's option.
template <class Option>
Option Adapted(const Option& tGiven) {
  Option tOption = tGiven;
  // Fusion shows the focus of buttons only after a Tab, and a click gives it to them, too.
  if ((tOption.state & QStyle::State_HasFocus) != 0)
    tOption.state |= QStyle::State_KeyboardFocusChange;
  // The frame's colour is that of the window, but darker; a dark window has no such shade.
  constexpr int DARKER = 140;
  const QColor tWindow = tOption.palette.color(QPalette::Window);
  const Color tFrame = FrameOn(ColorOf(tWindow), ColorOf(tWindow.darker(DARKER)));
  tOption.palette.setColor(QPalette::Window, Shown(tFrame).lighter(DARKER));
  return tOption;
}

}  // namespace

QColor Shown(Color tColor) { return {tColor.bRed, tColor.bGreen, tColor.bBlue}; }

ThemeColors ThemeOf(const QPalette& tPalette) {
  const auto fnColor = [&](QPalette::ColorRole eRole) {
    return ColorOf(tPalette.color(QPalette::Active, eRole));
  };
  return {fnColor(QPalette::Base), fnColor(QPalette::Text), fnColor(QPalette::Highlight),
          fnColor(QPalette::HighlightedText)};
}

void FormStyle::polish(QPalette& tPalette) {
  QProxyStyle::polish(tPalette);
  const ThemeColors tTheme = ThemeOf(tPalette);
  for (const auto& [eGroup, eState] : {std::pair(QPalette::Active, LineState::Selected),
                                       {QPalette::Inactive, LineState::SelectedAway}}) {
    const LineColors tSelected = LineColorsOf(tTheme, eState);
    tPalette.setColor(eGroup, QPalette::Highlight, Shown(tSelected.tBack));
    tPalette.setColor(eGroup, QPalette::HighlightedText, Shown(tSelected.tText));
  }
  // Fusion's buttons are that much lighter than their colour.
  constexpr int LIGHTER_BUTTON = 125;
  for (const auto& [eBack, eText, lLighter] :
       {std::tuple(QPalette::Base, QPalette::Text, 100),
        {QPalette::Window, QPalette::WindowText, 100},
        {QPalette::Button, QPalette::ButtonText, LIGHTER_BUTTON}}) {
    const QColor tBack = tPalette.color(QPalette::Disabled, eBack).lighter(lLighter);
    const QColor tText = tPalette.color(QPalette::Active, eText);
    const QColor tOwn = tPalette.color(QPalette::Disabled, eText);
    tPalette.setColor(QPalette::Disabled, eText,
                      Shown(DisabledOn(ColorOf(tBack), ColorOf(tText), ColorOf(tOwn))));
  }
}

void FormStyle::drawPrimitive(PrimitiveElement eElement, const QStyleOption* pOption,
                              QPainter* pPainter, const QWidget* pWidget) const {
  const auto fnDraw = [&](const auto& tAdapted) {
    QProxyStyle::drawPrimitive(eElement, &tAdapted, pPainter, pWidget);
  };
  // Of the parts only those that draw a frame themselves: adapted twice it would be too strong.
  if (eElement == PE_Frame || eElement == PE_FrameLineEdit) {
    if (const auto* pFrame = qstyleoption_cast<const QStyleOptionFrame*>(pOption))
      return fnDraw(Adapted(*pFrame));
  }
  if (eElement == PE_PanelButtonCommand || eElement == PE_IndicatorCheckBox) {
    if (const auto* pButton = qstyleoption_cast<const QStyleOptionButton*>(pOption))
      return fnDraw(Adapted(*pButton));
  }
  if (eElement == PE_FrameFocusRect) {
    if (const auto* pFocus = qstyleoption_cast<const QStyleOptionFocusRect*>(pOption))
      return fnDraw(Adapted(*pFocus));
  }
  QProxyStyle::drawPrimitive(eElement, pOption, pPainter, pWidget);
}

void FormStyle::drawComplexControl(ComplexControl eControl, const QStyleOptionComplex* pOption,
                                   QPainter* pPainter, const QWidget* pWidget) const {
  const auto* pBar = qstyleoption_cast<const QStyleOptionSlider*>(pOption);
  if (eControl != CC_ScrollBar || pBar == nullptr)
    return QProxyStyle::drawComplexControl(eControl, pOption, pPainter, pWidget);
  const auto tAdapted = Adapted(*pBar);
  QProxyStyle::drawComplexControl(eControl, &tAdapted, pPainter, pWidget);
}

}  // namespace platform::qt
