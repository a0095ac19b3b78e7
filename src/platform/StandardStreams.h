#pragma once

/// The streams that a console program gets from whoever started it.
namespace platform {

/// Lets standard input and output pass every byte as it is, where a system would translate line
/// ends. Called before the first use of either.
void SetBinaryStandardStreams();

}  // namespace platform
