#pragma once

#include <cstdint>

/// Keeps the in-place editor over its line while the listing scrolls: replaces the list's window
/// procedure for as long as the editor is open.
namespace modDISListFollow {

/// A window whose editor follows its list.
class FollowingWindow {
 public:
  virtual ~FollowingWindow() = default;
  virtual void DisassEditFollowListScroll() = 0;
};

/// Subclasses a list box, once, and registers the window that owns it; handle 0 does nothing. The
/// window stays registered until StopListFollow, which must come before it is gone.
void StartListFollow(std::uint32_t hWnd, FollowingWindow* frm);

/// Gives the list its previous window procedure back and forgets the window.
void StopListFollow(std::uint32_t hWnd);

}  // namespace modDISListFollow
