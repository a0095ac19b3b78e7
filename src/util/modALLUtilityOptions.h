#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

/// What all programs of the project have in common on the command line.
namespace modALLUtility {

/// What a program tells of itself when its arguments ask for that: its help for "--help" or "-h",
/// its name and version for "--version".
/// @return whole lines; none when they do not ask
std::optional<std::string> ProgramInformation(std::span<const std::string> asArgument,
                                              std::string_view sProgram, std::string_view sHelp);

/// What a user gave (an argument, a file's name, a line of source) as it may stand in a message to
/// a terminal, which acts on control characters: UTF-8 as it is, with "?" in place of those, and of
/// what is no UTF-8.
std::string Printable(std::string_view sText);

}  // namespace modALLUtility
