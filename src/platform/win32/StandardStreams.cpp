#include "platform/StandardStreams.h"

#include <fcntl.h>
#include <io.h>

#include <cstdio>

namespace platform {

void SetBinaryStandardStreams() {
  _setmode(_fileno(stdin), _O_BINARY);
  _setmode(_fileno(stdout), _O_BINARY);
}

}  // namespace platform
