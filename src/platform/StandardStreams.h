#pragma once

#include <string>

/// The streams that a program gets from whoever started it.
namespace platform {

/// Lets standard input and output pass every byte as it is, where a system would translate line
/// ends. Called before the first use of either.
void SetBinaryStandardStreams();

/// Prints a text to standard output, or to standard error. A window program on Windows has neither
/// unless it was given one, and shows the text in a message box instead.
/// @return false when it could not be written
bool PrintOutput(const std::string& sText);
bool PrintError(const std::string& sText);

}  // namespace platform
