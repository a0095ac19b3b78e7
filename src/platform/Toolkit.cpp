#include "platform/Toolkit.h"

#include <cassert>

namespace platform {

namespace {
Toolkit* pTheToolkit = nullptr;
}

Toolkit& TheToolkit() {
  assert(pTheToolkit != nullptr);
  return *pTheToolkit;
}

void SetToolkit(Toolkit& tToolkit) { pTheToolkit = &tToolkit; }

}  // namespace platform
