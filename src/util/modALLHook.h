#pragma once

#include <cstdint>
#include <memory>

/// The mouse hook of the user-interface thread: reports that the user is at work in this program.
/// It only observes; every message goes on unchanged.
namespace modALLHook {

/// A window that can be told of user activity.
class ActivityTarget {
 public:
  virtual ~ActivityTarget() = default;
  virtual void do_UserActivity() = 0;
};

/// Makes a window the one that is told, and installs the hook if none is. No window: nothing.
void InstallActivityHook(const std::shared_ptr<ActivityTarget>& frm);

/// Removes the hook and forgets the window.
void RemoveActivityHook();

/// True for the sixteen messages of a pressed or double-clicked mouse button, in a window or on
/// its frame.
bool IsActivityMessage(std::uintptr_t lMsg);

}  // namespace modALLHook
