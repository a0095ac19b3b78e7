#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

/// The arguments that all programs of the project know.
namespace modALLUtility {

/// What a program tells of itself when its arguments ask for that: its help for "--help" or "-h",
/// its name and version for "--version".
/// @return whole lines; none when they do not ask
std::optional<std::string> ProgramInformation(std::span<const std::string> asArgument,
                                              std::string_view sProgram, std::string_view sHelp);

}  // namespace modALLUtility
