// Resource ids, shared by the resource scripts and the code.
#pragma once

#define BX_ZOOM_MENU 139
#define BX_ABOUT_DIALOG 191
#define BX_WAIT_CURSOR 194
#define BX_LIGHT_SOURCE_TABLE_DIALOG 210
#define BX_DEBUG_IMAGE_DIALOG 211
#define BX_OPEN_HAND_CURSOR 240
#define BX_CLOSED_HAND_CURSOR 241
#define BX_ZOOM_IN_CURSOR 242
#define BX_ZOOM_OUT_CURSOR 243
#define BX_NO_ZOOM_CURSOR 244
#define BX_HIDE_EFFECT_CURSOR 245
#define BX_SHOW_EFFECT_CURSOR 246
#define BX_PROPERTY_LIST 16000
#define BX_TERMINOLOGY 16000

#ifndef RC_INVOKED
constexpr int kZoomMenuId = BX_ZOOM_MENU;
constexpr int kAboutDialogId = BX_ABOUT_DIALOG;
constexpr int kWaitCursorId = BX_WAIT_CURSOR;
constexpr int kLightSourceTableDialogId = BX_LIGHT_SOURCE_TABLE_DIALOG;
constexpr int kDebugImageDialogId = BX_DEBUG_IMAGE_DIALOG;
constexpr int kOpenHandCursorId = BX_OPEN_HAND_CURSOR;
constexpr int kClosedHandCursorId = BX_CLOSED_HAND_CURSOR;
constexpr int kZoomInCursorId = BX_ZOOM_IN_CURSOR;
constexpr int kZoomOutCursorId = BX_ZOOM_OUT_CURSOR;
constexpr int kNoZoomCursorId = BX_NO_ZOOM_CURSOR;
constexpr int kHideEffectCursorId = BX_HIDE_EFFECT_CURSOR;
constexpr int kShowEffectCursorId = BX_SHOW_EFFECT_CURSOR;
constexpr int kPropertyListId = BX_PROPERTY_LIST;
constexpr int kTerminologyId = BX_TERMINOLOGY;
#endif
