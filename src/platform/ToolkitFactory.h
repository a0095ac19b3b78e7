#pragma once

#include <memory>

#include "platform/Toolkit.h"

namespace platform {

/// Starts the system's window toolkit, the one that the build links.
/// @param lArgc   main's argument count; must outlive the toolkit, which takes out what is its own
/// @param asArgv  main's arguments, as long-lived
/// @return the toolkit; where the system has no display to show windows on, it ends the program
std::unique_ptr<Toolkit> CreateToolkit(int& lArgc, char** asArgv);

}  // namespace platform
