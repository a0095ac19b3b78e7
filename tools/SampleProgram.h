#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

/// A small program that shows every family of Z80 instructions, for when there is nothing else to
/// look at.
namespace SampleProgram {

/// Assembles the program to an address of an image.
/// @return its bytes; none, with the message in sError and the image as it was, when it would go
///         past FFFF
std::optional<std::int32_t> LoadSample(std::int32_t lAddress,
                                       std::span<std::uint8_t, 65536> abImage, std::string& sError);

}  // namespace SampleProgram
