#include "platform/StandardStreams.h"

namespace platform {

// POSIX knows no other streams than binary ones.
void SetBinaryStandardStreams() {}

}  // namespace platform
