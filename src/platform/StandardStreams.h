#pragma once

#include <string>

/// The streams that a program gets from whoever started it.
namespace platform {

/// Sees to it that a stream which was closed when the program started stays so: on Linux, the next
/// file that is opened would take its number, and what is printed would be written into that file.
/// Called before anything is opened.
void SecureStandardStreams();

/// Lets standard input and output pass every byte as it is, where a system would translate line
/// ends. Called before the first use of either.
void SetBinaryStandardStreams();

/// Whether what is printed to standard output is shown to a user at once.
bool IsOutputTerminal();

/// Prints a text to standard output, or to standard error. A window program on Windows has neither
/// unless it was given one, and shows the text in a message box instead.
/// @return false when it could not be written
bool PrintOutput(const std::string& sText);
bool PrintError(const std::string& sText);

}  // namespace platform
