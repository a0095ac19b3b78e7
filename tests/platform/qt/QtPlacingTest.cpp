// What a window system may do about a wish for a place, and when.

#include <gtest/gtest.h>

#include "platform/qt/QtPlacing.h"

using platform::qt::QtPlacing;

namespace {

const QRect ASKED(200, 100, 400, 600);
const QRect OTHER(0, 0, 1920, 1200);
const QMargins NO_FRAME;
const QMargins FRAME(1, 20, 1, 5);

/// Lets the window come to rest; how often a place was requested meanwhile.
int Rest(QtPlacing& tPlacing, const QMargins& tFrame) {
  tPlacing.Exposed();
  int lRequests = 0;
  for (int lTick = 0; lTick < 3 * QtPlacing::REST_TICKS; ++lTick) {
    lRequests += tPlacing.Request(tFrame).has_value() ? 1 : 0;
    tPlacing.Tick();
  }
  EXPECT_TRUE(tPlacing.IsAtRest());
  return lRequests;
}

/// A window that was shown at the asked place, in its frame.
QtPlacing Placed() {
  QtPlacing tPlacing;
  tPlacing.Ask(ASKED);
  Rest(tPlacing, FRAME);
  return tPlacing;
}

TEST(QtPlacing, AFrameThatIsKnownLateIsAllowedForOnce) {
  QtPlacing tPlacing;
  tPlacing.Ask(ASKED);
  EXPECT_EQ(tPlacing.Request(NO_FRAME), ASKED);
  tPlacing.Changed();  // shown, but the window manager takes its time
  EXPECT_EQ(tPlacing.Request(NO_FRAME), std::nullopt);
  for (int lTick = 0; lTick < 3 * QtPlacing::REST_TICKS; ++lTick) tPlacing.Tick();
  EXPECT_FALSE(tPlacing.IsPlaced());
  EXPECT_EQ(tPlacing.Outer(OTHER, NO_FRAME, true), ASKED);
  EXPECT_EQ(Rest(tPlacing, FRAME), 1);
  EXPECT_TRUE(tPlacing.IsPlaced());
}

TEST(QtPlacing, WhatIsRefusedIsNotAskedForAgain) {
  QtPlacing tPlacing = Placed();
  EXPECT_TRUE(tPlacing.Ask(ASKED));
  EXPECT_EQ(tPlacing.Outer(OTHER, FRAME, true), ASKED);  // pending
  EXPECT_EQ(Rest(tPlacing, FRAME), 1);
  EXPECT_EQ(tPlacing.Outer(OTHER, FRAME, true), OTHER.marginsAdded(FRAME));
  // Where no places are told, the size alone is what it is.
  EXPECT_EQ(tPlacing.Outer(OTHER, NO_FRAME, false), QRect(ASKED.topLeft(), OTHER.size()));
}

TEST(QtPlacing, AFormsAnswerToAChangeWaitsUntilItIsKnownWhatTheChangeIs) {
  QtPlacing tPlacing = Placed();
  tPlacing.Changed();
  tPlacing.BeginReport();
  EXPECT_FALSE(tPlacing.Ask(ASKED));
  tPlacing.EndReport();
  EXPECT_EQ(tPlacing.Outer(OTHER, NO_FRAME, true), OTHER);
  EXPECT_EQ(Rest(tPlacing, FRAME), 0);
  EXPECT_TRUE(tPlacing.TakeWaiting());
  EXPECT_FALSE(tPlacing.TakeWaiting());
  EXPECT_TRUE(tPlacing.Ask(ASKED));  // told again, the form gets its way
}

TEST(QtPlacing, BeforeTheWindowIsPlacedTheFormAloneHasASay) {
  QtPlacing tPlacing;
  tPlacing.Ask(OTHER);
  tPlacing.BeginReport();
  EXPECT_TRUE(tPlacing.Ask(ASKED));
  tPlacing.EndReport();
  EXPECT_EQ(tPlacing.Outer(OTHER, NO_FRAME, true), ASKED);
}

}  // namespace
