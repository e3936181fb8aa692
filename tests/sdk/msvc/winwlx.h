#pragma once

// As windows.h beside it.

#define WLX_SAS_ACTION_NONE 2

typedef struct _WLX_MPR_NOTIFY_INFO* PWLX_MPR_NOTIFY_INFO;
