#include "config/modALLProcessFolders.h"

#include <optional>

#include "config/modALLProcessError.h"
#include "platform/Environment.h"

namespace modALLProcess {

namespace {

std::string SuiteFolder(const std::optional<std::string>& sBase) {
  if (sBase) {
    std::string sPath = *sBase + platform::PATH_SEPARATOR + "VARNEL";
    // What is read there is believed, so that it must not be another user's to write.
    if (platform::CreateFolder(sPath) && platform::SecureFolder(sPath)) return sPath;
  }
  throw RuntimeError(75, "Path/File access error");
}

}  // namespace

std::string LocalAppFolder() { return SuiteFolder(platform::UserDataFolder()); }

std::string TempFolder() { return SuiteFolder(platform::UserTempFolder()); }

}  // namespace modALLProcess
