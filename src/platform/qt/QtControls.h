#pragma once

#include <QFont>
#include <QWidget>
#include <memory>

#include "platform/Toolkit.h"
#include "platform/qt/QtMetrics.h"

namespace platform::qt {

class QtForm;

struct ControlFonts {
  QFont tForm;
  QFont tListing;
};

/// A control: the widget, which its parent owns, and what the form's logic sees of it.
struct BuiltControl {
  QWidget* pWidget;
  std::unique_ptr<Control> pControl;
};

/// Builds a control into a form. Its events go to the form's logic.
BuiltControl BuildControl(QtForm& frm, QWidget& tParent, const ControlDesign& tDesign,
                          const ControlFonts& tFonts);

/// Takes the focus from a widget that is about to be disabled or hidden, unless it has none: Qt
/// would give it to the next in the tab order, in which a key may do harm.
void YieldFocus(QWidget& tWidget);

/// What all controls have, on a widget that outlives this object's use.
/// @tparam Interface  Control or one of its kinds
/// @tparam Widget     the widget's class
template <class Interface, class Widget>
class ControlOn : public Interface {
 public:
  /// @param lOutset  pixels by which the widget reaches farther left than the control's place
  ControlOn(Widget& tItsWidget, const ControlDesign& tDesign, int lOutset = 0)
      : tWidget(tItsWidget), tPlace(tDesign.tPlace), lLeftOutset(lOutset) {
    tWidget.setObjectName(TextOf(tDesign.sName));
    ControlOn::Move(tDesign.tPlace);
    ControlOn::SetVisible(tDesign.bVisible);
  }

  void SetEnabled(bool bEnabled) override {
    if (!bEnabled) YieldFocus(tWidget);
    tWidget.setEnabled(bEnabled);
  }
  bool Enabled() const override { return tWidget.isEnabled(); }
  void SetVisible(bool bNowVisible) override {
    bVisible = bNowVisible;
    if (!bVisible) YieldFocus(tWidget);
    tWidget.setVisible(bVisible);
  }
  bool Visible() const override { return bVisible; }
  void SetFocus() override { tWidget.setFocus(Qt::OtherFocusReason); }
  void Move(const TwipsRect& tNewPlace) override {
    tPlace = tNewPlace;
    tWidget.setGeometry(PixelsOf(tPlace).adjusted(-lLeftOutset, 0, 0, 0));
  }
  TwipsRect Place() const override { return tPlace; }
  void BringToFront() override { tWidget.raise(); }

 protected:
  Widget& tWidget;

 private:
  TwipsRect tPlace;
  int lLeftOutset;
  bool bVisible = true;
};

}  // namespace platform::qt
