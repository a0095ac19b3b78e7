#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "disass/frmDisass.h"
#include "platform/StandardStreams.h"
#include "platform/ToolkitFactory.h"
#include "util/modALLUtilityOptions.h"

namespace {

constexpr int STATUS_USAGE = 2;

constexpr std::string_view HELP =
    R"(Usage: varnel-disass [-h | --help | --version]

Opens a window on the memory of the Z80 emulator that the user runs, or of its
stand-in, varnel-emulator: lists it as instructions, assembles what is typed
over a line into it, sets breakpoints and saves the listing.

  -h, --help  print this
  --version   print the version

On Linux, Qt's own options are taken as well, such as -style NAME and
-platform NAME.

Exit status: 0 when all windows were closed; 1 when the program could not
start; 2 for wrong usage.
)";

/// The first argument that cannot be the toolkit's own: that is "-option", or a value behind one.
std::optional<std::string> FirstForeign(const std::vector<std::string>& asArgument) {
  bool bMayBeValue = false;
  for (const std::string& sArgument : asArgument) {
    const bool bOption = sArgument.starts_with('-');
    if (sArgument.starts_with("--") || (!bOption && !bMayBeValue)) return sArgument;
    bMayBeValue = bOption;
  }
  return std::nullopt;
}

int Refuse(const std::string& sArgument) {
  platform::PrintError("varnel-disass: unknown argument: " + modALLUtility::Printable(sArgument) +
                       " (see varnel-disass --help)\n");
  return STATUS_USAGE;
}

}  // namespace

int main(int lArguments, char** apArgument) {
  platform::SecureStandardStreams();
  // What needs no window is answered where there is no display, too.
  const std::vector<std::string> asArgument(apArgument + (lArguments > 0 ? 1 : 0),
                                            apArgument + lArguments);
  if (const auto sText = modALLUtility::ProgramInformation(asArgument, "varnel-disass", HELP)) {
    return platform::PrintOutput(*sText) ? 0 : STATUS_USAGE;
  }
  if (const auto sForeign = FirstForeign(asArgument)) return Refuse(*sForeign);

  const auto pToolkit = platform::CreateToolkit(lArguments, apArgument);
  if (lArguments > 1) return Refuse(apArgument[1]);
  platform::SetToolkit(*pToolkit);
  frmDisass::LoadNew()->WindowForm().Show();
  pToolkit->Run();
  return 0;
}
