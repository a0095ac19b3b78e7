#pragma once

// Numbers of the program's resources, for the resource compiler, too.

#define PROGRAM_ICON 1
