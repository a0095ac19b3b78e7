#include "util/modALLUtilityMessages.h"

#include "platform/Toolkit.h"

namespace modALLUtility {

std::int32_t ShowMessage(std::string_view sPrompt, std::int32_t lStyle, std::string_view sTitle) {
  return platform::TheToolkit().MessageBox(sPrompt, lStyle, sTitle);
}

}  // namespace modALLUtility
