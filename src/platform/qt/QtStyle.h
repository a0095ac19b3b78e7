#pragma once

#include <QPalette>
#include <QProxyStyle>

#include "platform/Colors.h"

namespace platform::qt {

QColor Shown(Color tColor);

/// The colours of lists and text boxes in a palette.
ThemeColors ThemeOf(const QPalette& tPalette);

/// The style of forms: Fusion, for whose control heights they are drawn, in colours and with frames
/// that can be seen in every theme, and with the focus shown however it came.
class FormStyle final : public QProxyStyle {
 public:
  FormStyle() : QProxyStyle("Fusion") {}
  using QProxyStyle::polish;
  void polish(QPalette& tPalette) override;
  void drawPrimitive(PrimitiveElement eElement, const QStyleOption* pOption, QPainter* pPainter,
                     const QWidget* pWidget) const override;
  void drawComplexControl(ComplexControl eControl, const QStyleOptionComplex* pOption,
                          QPainter* pPainter, const QWidget* pWidget) const override;
};

}  // namespace platform::qt
