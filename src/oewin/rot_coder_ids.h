// Resource ids of the ROT coder dialog (rot_coder.rc).
#pragma once

#define IDD_ROT_CODER 9100
#define IDC_ROT_TEXT1 9101
#define IDC_ROT_LABEL1 9102
#define IDC_ROT_TXTILE 9103
#define IDC_ROT_LABEL2 9104
#define IDC_ROT_TEXT2 9105
#define IDC_ROT_CMDOK 9106
#define IDC_ROT_CMDREPLACE 9107
#define IDC_ROT_CMDCANCEL 9108
