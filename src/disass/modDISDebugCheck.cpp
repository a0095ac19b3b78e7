#include "disass/modDISDebugCheck.h"

#include <memory>

#include "link/modALLSharedMap.h"
#include "platform/Toolkit.h"
#include "util/modALLUtilityMessages.h"
#include "z80/modDISDebug.h"

namespace modDISDebug {

void DISDebug_CheckAssembler(const std::function<bool()>& fnGoOn) {
  const auto pReference = std::make_unique<modALLDisass::MemoryImage>();
  modALLSharedMap::CopyRamImage(*pReference);
  const auto pWork = std::make_unique<modALLDisass::MemoryImage>(*pReference);
  const CheckCounters tCounters = CheckImages(*pReference, *pWork, [&fnGoOn] {
    platform::TheToolkit().DoEvents();
    return fnGoOn();
  });
  if (fnGoOn()) {
    modALLUtility::ShowMessage(CheckSummary(tCounters), modALLUtility::MSG_INFORMATION,
                               modALLUtility::TITLE_ASSEMBLER_DEBUG);
  }
}

}  // namespace modDISDebug
