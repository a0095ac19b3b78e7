#pragma once

#include <array>
#include <cstdint>

#include "platform/Toolkit.h"

/// The window as designed: the one table of controls, captions, places and menus.
namespace frmDisassDesign {

/// The controls' numbers, in the table's order.
enum ControlNumber : std::int16_t {
  LABEL_START,
  TXT_START,
  LABEL_END,
  TXT_END,
  CMD_DISASS,
  CHK_ALLOW,
  CHK_LONG,
  CMD_DEBUG,
  LST_DIS,
  TXT_ASM,
};

/// The menu entries' numbers, in the table's order.
enum MenuNumber : std::int16_t {
  MNU_FILE,
  MNU_SAVE,
  MNU_WINDOW,
  MNU_WINDOW_OPEN,
  MNU_WINDOW_SEP,
  MNU_WINDOW_ITEM,
  MNU_DIS_POPUP,
  MNU_SET_BREAKPOINT,
};

// The window's outer place at load, before any saved one, in twips.
inline constexpr std::int32_t WINDOW_TOP = 50;
inline constexpr std::int32_t WINDOW_LEFT = 9195;
inline constexpr std::int32_t WINDOW_HEIGHT = 8415;
inline constexpr std::int32_t WINDOW_WIDTH = 6375;

// The least room inside the window: both address fields, enough of "Disassemble again" to press it,
// the listing up to the instruction column, and some five lines.
inline constexpr std::int32_t SMALLEST_WIDTH = 5100;
inline constexpr std::int32_t SMALLEST_HEIGHT = 2400;

/// F5 as a virtual-key code; letters have their own.
inline constexpr std::int16_t KEY_F5 = 116;

/// Most characters of the editor: the width of the listing's instruction column.
inline constexpr std::int16_t EDITOR_LENGTH = 19;

/// The editor's background, light cyan, as 00BBGGRRH.
inline constexpr std::int32_t EDITOR_BACK_COLOR = 0x00FFFFC0;

inline constexpr std::array<platform::ControlDesign, 10> CONTROLS{{
    {.iControl = LABEL_START,
     .eKind = platform::ControlKind::Label,
     .sName = "Label1",
     .sCaption = "Start address:",
     .tPlace = {120, 120, 975, 195}},
    {.iControl = TXT_START,
     .eKind = platform::ControlKind::TextBox,
     .sName = "txtStart",
     .sCaption = "Start address",
     .tPlace = {1260, 120, 675, 255},
     .iTabOrder = 0,
     .iMaxLength = 4},
    {.iControl = LABEL_END,
     .eKind = platform::ControlKind::Label,
     .sName = "Label2",
     .sCaption = "End address:",
     .tPlace = {2340, 120, 930, 195}},
    {.iControl = TXT_END,
     .eKind = platform::ControlKind::TextBox,
     .sName = "txtEnd",
     .sCaption = "End address",
     .tPlace = {3420, 120, 675, 255},
     .iTabOrder = 1,
     .iMaxLength = 4},
    {.iControl = CMD_DISASS,
     .eKind = platform::ControlKind::Button,
     .sName = "cmdDisass",
     .sCaption = "Disassemble again",
     .tPlace = {4500, 60, 1515, 375},
     .iTabOrder = 2,
     .tKey = {.iKeyCode = KEY_F5}},
    {.iControl = CHK_ALLOW,
     .eKind = platform::ControlKind::CheckBox,
     .sName = "chkAllow",
     .sCaption = "Suppress warnings for writing assembled instructions into write-protected RAM",
     .tPlace = {120, 480, 5895, 255},
     .iTabOrder = 3},
    {.iControl = CHK_LONG,
     .eKind = platform::ControlKind::CheckBox,
     .sName = "chkLong",
     .sCaption = "Suppress overwrite warnings for longer assembled instructions",
     .tPlace = {120, 780, 4695, 255},
     .iTabOrder = 4},
    {.iControl = CMD_DEBUG,
     .eKind = platform::ControlKind::Button,
     .sName = "cmdDebug",
     .sCaption = "Debug instructions",
     .tPlace = {4500, 1020, 1515, 315},
     .iTabOrder = 5},
    {.iControl = LST_DIS,
     .eKind = platform::ControlKind::ListBox,
     .sName = "lstDis",
     .sCaption = "Listing",
     .tPlace = {120, 1140, 6015, 6500},
     .iTabOrder = 6,
     .bListingFont = true},
    {.iControl = TXT_ASM,
     .eKind = platform::ControlKind::TextBox,
     .sName = "txtAsm",
     .sCaption = "Instruction",
     .tPlace = {120, 1140, 2000, 255},
     .iMaxLength = EDITOR_LENGTH,
     .bVisible = false,
     .bListingFont = true,
     .lBackColor = EDITOR_BACK_COLOR},
}};

inline constexpr std::array<platform::MenuDesign, 8> MENUS{{
    {MNU_FILE, -1, platform::MenuKind::Menu, "File", true, 'F'},
    {MNU_SAVE, MNU_FILE, platform::MenuKind::Item, "Save", true, 0, {'S', true}},
    {MNU_WINDOW, -1, platform::MenuKind::Menu, "Window", true, 'W'},
    {MNU_WINDOW_OPEN,
     MNU_WINDOW,
     platform::MenuKind::Item,
     "Open new window",
     true,
     0,
     {'N', true}},
    {MNU_WINDOW_SEP, MNU_WINDOW, platform::MenuKind::Separator, "", false},
    {MNU_WINDOW_ITEM, MNU_WINDOW, platform::MenuKind::ItemArray, "", false},
    {MNU_DIS_POPUP, -1, platform::MenuKind::Popup, "Disassembler"},
    {MNU_SET_BREAKPOINT, MNU_DIS_POPUP, platform::MenuKind::Item, "Set breakpoint here"},
}};

inline constexpr platform::FormDesign FORM{
    .sName = "frmDisass",
    .sCaption = "Varnel - Disassembler/Assembler",
    .atControl = CONTROLS,
    .atMenu = MENUS,
    .sListingFont = "Consolas",
    .dListingPoints = 9.75,
    .iListingColumns = 49,  // address, bytes, instruction and the characters of four bytes
    .lListingWidth = 6015,  // in a window of the design width with a frame of 60 twips a side
    .tSmallest = {SMALLEST_WIDTH, SMALLEST_HEIGHT},
    .lGreatestWidth = WINDOW_WIDTH,
    .iTimerInterval = 100,
};

}  // namespace frmDisassDesign
