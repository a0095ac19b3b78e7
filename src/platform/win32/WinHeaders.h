#pragma once

/// The Windows headers without their macros for calls that take text: the seam's classes have
/// methods of the same names. Every such call here says by its last letter which text it takes.

#include <windows.h>
// These need windows.h before them.
#include <commctrl.h>
#include <commdlg.h>
#include <objbase.h>

#undef CallWindowProc
#undef GetProp
#undef LoadIcon
#undef MessageBox
#undef RemoveProp
#undef SetProp
