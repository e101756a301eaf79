// Resource identifiers of the options window, its pages and dialogs, and the
// main window's menu. Dialog templates use 4000..4099 and menu commands
// 4500..4599, apart from the other windows' resources.
#pragma once

#define IDD_OPTIONS 4000
#define IDD_PAGE_HEADERS 4001
#define IDD_PAGE_FILTERS 4002
#define IDD_PAGE_MISC 4003
#define IDD_PAGE_TUNNELS 4004
#define IDD_TUNNEL 4005
#define IDD_PAGE_SIGNATURES 4006
#define IDD_SENDER 4007
#define IDD_PAGE_QUOTES 4008
#define IDD_PAGE_TEXT 4009
#define IDD_PAGE_FILES 4010
#define IDD_PAGE_ICON 4011
#define IDD_PAGE_START 4012
#define IDD_PAGE_ABOUT 4013

// Controls (ids repeat between templates; each dialog has its own).
#define IDC_TABS 100
#define IDC_APPLY 101
#define IDC_L1 110
#define IDC_L2 111
#define IDC_L3 112
#define IDC_L4 113
#define IDC_L5 114
#define IDC_L6 115
#define IDC_L7 116
#define IDC_L8 117
#define IDC_L9 118
#define IDC_L10 119
#define IDC_L11 120
#define IDC_L12 121
#define IDC_C1 130
#define IDC_C2 131
#define IDC_C3 132
#define IDC_C4 133
#define IDC_C5 134
#define IDC_C6 135
#define IDC_T1 140
#define IDC_T2 141
#define IDC_T3 142
#define IDC_T4 143
#define IDC_T5 144
#define IDC_R1 150
#define IDC_R2 151
#define IDC_R3 152
#define IDC_LIST 160
#define IDC_LIST2 161
#define IDC_B1 170
#define IDC_B2 171
#define IDC_B3 172
#define IDC_B4 173
#define IDC_B5 174
#define IDC_B6 175
#define IDC_B7 176
#define IDC_B8 177
#define IDC_B9 178
#define IDC_SCROLL 180
#define IDC_TYPE 181
// Header rows: IDC_ROW + 3 * row + field (name, insert after, body).
#define IDC_ROW 200

// Main window and tray menu.
#define IDM_END 4500
#define IDM_OPTIONS 4501
#define IDM_ROT 4502
#define IDM_PREVIEW 4503
#define IDM_ISO 4504
#define IDM_LANG_FIRST 4510
#define IDM_ABOUT 4520
#define IDM_MAIN_WINDOW 4521
#define IDM_HELP 4522
