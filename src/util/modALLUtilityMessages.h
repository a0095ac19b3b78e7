#pragma once

#include <cstdint>
#include <string_view>

/// The one message-box wrapper, with the platform's standard style and result codes.
namespace modALLUtility {

// Buttons, icon and default button of a style; a style is the sum of one of each.
inline constexpr std::int32_t MSG_OK_ONLY = 0;
inline constexpr std::int32_t MSG_OK_CANCEL = 1;
inline constexpr std::int32_t MSG_YES_NO = 4;
inline constexpr std::int32_t MSG_CRITICAL = 16;
inline constexpr std::int32_t MSG_QUESTION = 32;
inline constexpr std::int32_t MSG_EXCLAMATION = 48;
inline constexpr std::int32_t MSG_INFORMATION = 64;
inline constexpr std::int32_t MSG_DEFAULT_BUTTON_2 = 256;

// Results: the pressed button.
inline constexpr std::int32_t MSG_RESULT_OK = 1;
inline constexpr std::int32_t MSG_RESULT_CANCEL = 2;
inline constexpr std::int32_t MSG_RESULT_YES = 6;
inline constexpr std::int32_t MSG_RESULT_NO = 7;

inline constexpr std::string_view TITLE_ERROR = "Varnel - Error";
inline constexpr std::string_view TITLE_QUESTION = "Varnel - Question";
inline constexpr std::string_view TITLE_CONFIRMATION = "Varnel - Confirmation";
inline constexpr std::string_view TITLE_PROTECTED_RAM = "Varnel - Protected RAM warning";
inline constexpr std::string_view TITLE_ASSEMBLER_WARNING = "Varnel - Assembler warning";
inline constexpr std::string_view TITLE_ASSEMBLER_DEBUG = "Varnel - Assembler Debug";

/// Shows a modal message box and gives the code of the pressed button. Other events run meanwhile:
/// after it returns, any window may be gone.
std::int32_t ShowMessage(std::string_view sPrompt, std::int32_t lStyle, std::string_view sTitle);

}  // namespace modALLUtility
