#pragma once

#include <cstdint>
#include <string_view>

#include "platform/Toolkit.h"

namespace platform::qt {

class QtForm;

/// Shows a message box, modal to its owner alone.
/// @param pOwner  nullptr: no owner, and no form is held up
/// @param lStyle  buttons, icon and default button as Windows numbers them; of the buttons OK,
///                OK and Cancel, Yes and No are known, others count as OK
/// @return the pressed button's number; closed or dismissed unanswered: Cancel, No or else OK
std::int32_t RunMessageBox(QtForm* pOwner, std::string_view sPrompt, std::int32_t lStyle,
                           std::string_view sTitle);

/// Shows a file dialog, modal to its form.
FileDialogResult RunFileDialog(QtForm& frm, const FileDialogRequest& tRequest);

}  // namespace platform::qt
