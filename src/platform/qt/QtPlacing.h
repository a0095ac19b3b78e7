#pragma once

#include <QMargins>
#include <QRect>
#include <optional>
#include <utility>

namespace platform::qt {

/// Where a window is to stand and where it does: what the program asked for, what of it is still
/// pending, and what is. A window manager carries out a wish later, in another way or not at all;
/// how wide its frame is, it tells some time after the window was shown; and while it maximizes a
/// window or the user drags it, its size changes before its state does.
///
/// Times are counted in ticks. A window is at rest when REST_TICKS have passed without a change.
class QtPlacing {
 public:
  static constexpr int TICK_MS = 50;
  static constexpr int REST_TICKS = 5;

  /// Notes that the program asks for an outer place.
  /// @return whether it is to be requested now. What a form asks for because of a change that is
  /// not
  ///         its own waits: the form is told of that change again when the window is at rest
  bool Ask(const QRect& tOuter);

  /// What is to be requested of the window system, if anything: an asked place that does not yet
  /// allow for a frame of these margins. Gives it once.
  std::optional<QRect> Request(const QMargins& tFrame);

  /// The outer place: what was asked for while that is pending, else what is.
  /// @param bTold  whether the window system tells where windows stand; else the corner asked for
  ///               last counts
  QRect Outer(const QRect& tClient, const QMargins& tFrame, bool bTold) const {
    QRect tOuter = tPending.value_or(tClient.marginsAdded(tFrame));
    if (!bTold) tOuter.moveTopLeft(tCorner);
    return tOuter;
  }

  /// Notes that the window has changed: it was moved, resized, or got another state.
  void Changed() { lQuietTicks = 0; }

  /// Notes that the window is on the screen. Only then does time count: a window manager may take
  /// any time until it has put a window into its frame.
  void Exposed() {
    bExposed = true;
    Changed();
  }
  bool WasExposed() const { return bExposed; }

  /// Lets a tick pass.
  /// @return whether the window has come to rest by it; nothing is pending any more then
  bool Tick();
  bool IsAtRest() const { return lQuietTicks >= REST_TICKS; }

  /// Whether the window has been at rest since it was shown: its frame is known.
  bool IsPlaced() const { return bPlaced; }

  /// Begins and ends telling the form of a change of size or state.
  void BeginReport() { ++lReports; }
  void EndReport() { --lReports; }

  /// Whether a form that was told of a change had asked for something: it is to be told again.
  /// Gives that once.
  bool TakeWaiting() { return std::exchange(bWaiting, false); }

 private:
  std::optional<QRect> tPending;
  QPoint tCorner;                          // asked for last
  std::optional<QMargins> tRequestedWith;  // the frame that the pending place was requested with
  int lQuietTicks = 0;
  int lReports = 0;
  bool bExposed = false;
  bool bPlaced = false;
  bool bWaiting = false;
};

}  // namespace platform::qt
