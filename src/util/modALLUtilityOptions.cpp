#include "util/modALLUtilityOptions.h"

#include <algorithm>

namespace modALLUtility {

std::optional<std::string> ProgramInformation(std::span<const std::string> asArgument,
                                              std::string_view sProgram, std::string_view sHelp) {
  const auto fnAsked = [&](std::string_view sOption) {
    return std::ranges::find(asArgument, sOption) != asArgument.end();
  };
  if (fnAsked("--help") || fnAsked("-h")) return std::string(sHelp);
  if (fnAsked("--version")) return std::string(sProgram) + " " VARNEL_VERSION "\n";
  return std::nullopt;
}

}  // namespace modALLUtility
