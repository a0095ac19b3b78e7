#pragma once

#include <functional>

/// The self-check of decoder and assembler, started from the window.
namespace modDISDebug {

/// Checks the program that is in the emulated memory now and shows the counts. Lets events run
/// meanwhile.
/// @param fnGoOn  false when the window that asked is gone: the check ends without a message
void DISDebug_CheckAssembler(const std::function<bool()>& fnGoOn);

}  // namespace modDISDebug
