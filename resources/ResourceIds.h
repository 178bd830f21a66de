// Resource ids, shared by the resource scripts and the code.
#pragma once

#define BX_ABOUT_DIALOG 191
#define BX_WAIT_CURSOR 194
#define BX_PROPERTY_LIST 16000
#define BX_TERMINOLOGY 16000

#ifndef RC_INVOKED
constexpr int kAboutDialogId = BX_ABOUT_DIALOG;
constexpr int kWaitCursorId = BX_WAIT_CURSOR;
constexpr int kPropertyListId = BX_PROPERTY_LIST;
constexpr int kTerminologyId = BX_TERMINOLOGY;
#endif
