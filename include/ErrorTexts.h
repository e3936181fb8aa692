#pragma once

#include <windows.h>

// The error texts that all sources share. Order and wording are fixed: support tools search logs for them.
// Some rows serve only other products of the same family.

// clang-format off
#define LUM_ERROR_TEXTS(ROW) \
    ROW(ERR_ADJUST_TOKEN_PRIVILEGES, "AdjustTokenPrivileges call failed") \
    ROW(ERR_BAD_ARG, "A bad argument was provided") \
    ROW(ERR_BAD_CONTROL_ID, "Bad control ID") \
    ROW(ERR_BIT_BLT, "BitBlt function call failed") \
    ROW(ERR_COPY_RECT, "Could not copy RECT information") \
    ROW(ERR_CREATE_COMPATIBLE_DC, "CreateCompatibleDC function call failed") \
    ROW(ERR_CREATE_EVENT, "CreateEvent function call failed") \
    ROW(ERR_CREATE_FONT_INDIRECT, "CreateFontIndirect function call failed") \
    ROW(ERR_CREATE_NAMED_PIPE, "CreateNamedPipe function call failed") \
    ROW(ERR_CREATE_SOLID_BRUSH, "CreateSolidBrush function call failed") \
    ROW(ERR_DELETE_OBJECT, "DeleteObject function call failed") \
    ROW(ERR_DESTROY_ICON, "DestroyIcon function call failed") \
    ROW(ERR_DESTROY_SPECIFIED_WINDOW, "Could not destroy specified window") \
    ROW(ERR_DIALOG_BOX, "DialogBox function call failed") \
    ROW(ERR_DISCONNECT_NAMED_PIPE, "DisconnectNamedPipe function call failed") \
    ROW(ERR_DUPLICATE_TOKEN, "DuplicateToken function call failed") \
    ROW(ERR_FILL_RECT, "FillRect function call failed") \
    ROW(ERR_FLUSH_FILE_BUFFERS, "FlushFileBuffers function call failed") \
    ROW(ERR_GET_VALID_DC_HANDLE, "Could not get valid DC handle") \
    ROW(ERR_GET_CLIENT_RECT_INFORMATION, "Could not get client RECT information") \
    ROW(ERR_GET_COMBO_BOX_INFO, "GetComboBoxInfo function call failed") \
    ROW(ERR_GET_COMPUTER_NAME, "GetComputerName function call failed") \
    ROW(ERR_GET_DEVICE_CAPS, "Error occurred while calling GetDeviceCaps()") \
    ROW(ERR_GET_DIALOG_RESOURCE, "CResourceObject::GetDialogResource function call failed") \
    ROW(ERR_OBTAIN_WINDOW_HANDLE_TO_DIALOG_CONTROL, "Could not obtain window handle to dialog control") \
    ROW(ERR_RETRIEVE_TEXT_FROM_DIALOG_CONTROL, "Could not retrieve text from dialog control") \
    ROW(ERR_GET_OBJECT_GDI, "GetObject (GDI) function call failed") \
    ROW(ERR_GET_STOCK_OBJECT, "GetStockObject function call failed") \
    ROW(ERR_GET_TEXT_EXTENT_POINT32, "GetTextExtentPoint32 function call failed") \
    ROW(ERR_GET_UPDATE_RECT, "GetUpdateRect function call failed") \
    ROW(ERR_GET_WINDOW_RECT_INFORMATION, "Could not get window RECT information") \
    ROW(ERR_INITIALIZE_SECURITY_DESCRIPTOR, "InitializeSecurityDescriptor function call failed") \
    ROW(ERR_LOAD_BITMAP, "CResourceObject::LoadBitmap function call failed") \
    ROW(ERR_LOAD_IMAGE, "LoadImage function call failed") \
    ROW(ERR_LOAD_RESOURCE, "LoadResource function call failed") \
    ROW(ERR_LOCAL_ALLOC, "LocalAlloc function call failed") \
    ROW(ERR_LOCK_RESOURCE, "LockResource function call failed") \
    ROW(ERR_LOGON_USER, "LogonUser function call failed") \
    ROW(ERR_LOOKUP_PRIVILEGE_VALUE, "LookupPrivilegeValue call failed") \
    ROW(ERR_MEMORY_ACCESS_VIOLATION, "Memory access violation") \
    ROW(ERR_MEM_ALLOC, "Memory could not be allocated") \
    ROW(ERR_MULTI_BYTE_TO_WIDE_CHAR, "MultiByteToWideChar function call failed") \
    ROW(ERR_NET_API_BUFFER_FREE, "NetApiBufferFree function call failed") \
    ROW(ERR_NET_USER_ENUM, "NetUserEnum function call failed") \
    ROW(ERR_NET_USER_GET_INFO, "NetUserGetInfo function call failed") \
    ROW(ERR_NET_WKSTA_USER_GET_INFO, "NetWkstaUserGetInfo function call failed") \
    ROW(ERR_NULL_WINDOW_HANDLE, "Null window handle") \
    ROW(ERR_OPEN_PROCESS_TOKEN, "OpenProcessToken call failed") \
    ROW(ERR_POST_MESSAGE, "Failed to post message") \
    ROW(ERR_READ_FILE, "ReadFile function call failed") \
    ROW(ERR_GET_RELEASE_DC_HANDLE, "Could not get release DC handle") \
    ROW(ERR_RESET_EVENT, "ResetEvent function call failed") \
    ROW(ERR_SELECT_OBJECT, "SelectObject function call failed") \
    ROW(ERR_SEND_MESSAGE, "SendMessage function call failed") \
    ROW(ERR_SET_DIALOG_ITEM_TEXT, "Could not set dialog item text") \
    ROW(ERR_SET_EVENT, "SetEvent function call failed") \
    ROW(ERR_SET_FOCUS, "SetFocus function call failed") \
    ROW(ERR_SET_SECURITY_DESCRIPTOR_DACL, "SetSecurityDescriptorDacl function call failed") \
    ROW(ERR_SET_THREAD_PRIORITY, "SetThreadPriority function call failed") \
    ROW(ERR_SET_WINDOW_TEXT, "SetWindowText function call failed") \
    ROW(ERR_MODIFY_WINDOW_POSITION_OR_SETTINGS, "Could not modify window position (or settings)") \
    ROW(ERR_STRCAT, "strcat function call failed") \
    ROW(ERR_STRCPY, "strcpy function call failed") \
    ROW(ERR_STRLEN, "strlen function call failed") \
    ROW(ERR_CREATE_THREAD, "Unable to create thread") \
    ROW(ERR_DELETE_FILE, "DeleteFile call failed") \
    ROW(ERR_IMPERSONATE_NAMED_PIPE_CLIENT, "ImpersonateNamedPipeClient function call failed") \
    ROW(ERR_IMPERSONATE_LOGGED_ON_USER, "ImpersonateLoggedOnUser function call failed") \
    ROW(ERR_REG_SAVE_KEY, "RegSaveKey call failed") \
    ROW(ERR_REVERT_TO_SELF, "RevertToSelf call failed") \
    ROW(ERR_SET_FILE_ATTRIBUTES, "SetFileAttributes call failed") \
    ROW(ERR_FIND_DIALOG_PROCEDURE_BASED_ON_KNOWN_INFORMATION, "Could not find dialog procedure based on known information") \
    ROW(ERR_VIRTUAL_ALLOC, "VirtualAlloc function call failed") \
    ROW(ERR_VIRTUAL_FREE, "VirtualFree function call failed") \
    ROW(ERR_VIRTUAL_LOCK, "VirtualLock function call failed") \
    ROW(ERR_VIRTUAL_UNLOCK, "VirtualUnlock function call failed") \
    ROW(ERR_WCSCAT, "wcscat function call generated an exception") \
    ROW(ERR_WCSCPY, "wcscpy function call generated an exception") \
    ROW(ERR_WCSICMP, "wcsicmp function call generated an exception") \
    ROW(ERR_WCSLEN, "wcslen function call generated an exception") \
    ROW(ERR_WCSSTR, "wcsstr function call generated an exception") \
    ROW(ERR_WIDE_CHAR_TO_MULTI_BYTE, "WideCharToMultiByte function call failed") \
    ROW(ERR_WMEMSET, "wmemset function call generated an exception") \
    ROW(ERR_WNET_ADD_CONNECTION, "WNetAddConnection function call failed") \
    ROW(ERR_WNET_CANCEL_CONNECTION, "WNetCancelConnection function call failed") \
    ROW(ERR_WNET_CONNECTION_DIALOG, "WNetConnectionDialog function call failed") \
    ROW(ERR_WRITE_FILE, "WriteFile function call failed") \
    ROW(ERR_WSPRINTF, "wsprintf function call generated an exception") \
    ROW(ERR_DELETE_VARIABLE, "Unable to delete variable") \
    ROW(ERR_OPERATION_FAILED, "The requested operation failed or it was cancelled") \
    ROW(ERR_NULL_DIALOG_OBJECT_POINTER, "Null dialog object pointer. All dialog messages will be dropped") \
    ROW(ERR_PULLING_NULL, "Client pulling value that is NULL") \
    ROW(ERR_PUSHING_NULL, "Client pushing value that is NULL") \
    ROW(ERR_FLOATING_POINTER, "Pointer is probably floating") \
    ROW(ERR_REQUEST_FAILED, "The requested operation failed") \
    ROW(ERR_SET_FOREGROUND_WINDOW, "SetForegroundWindow function call failed") \
    ROW(ERR_STRING_TOO_LONG, "String length to long") \
    ROW(ERR_MESSAGE_APP, "MESSAGE_APP") \
    ROW(ERR_UNHANDLED_EXCEPTION, "An unhandled exception occurred") \
    ROW(ERR_BAD_FORMAT, "Improperly formed format message")
// clang-format on

#define LUM_NAMED_TEXT(NAME, TEXT_) inline constexpr WCHAR NAME[] = TEXT(TEXT_);
LUM_ERROR_TEXTS(LUM_NAMED_TEXT)
#undef LUM_NAMED_TEXT
