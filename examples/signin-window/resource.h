#pragma once

// Macros, because the resource compiler reads this file too.
#define IDD_SIGNIN 100
#define IDC_ACCOUNT 101
#define IDC_PASSWORD 102
#define IDC_SIGN_IN 103
#define IDC_SIGN_OUT 104
#define IDC_OFFLINE 105
#define IDC_DETAILS 106
#define IDC_STATUS 107
#define IDC_PROGRESS 108
