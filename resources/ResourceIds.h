// Resource ids, shared by the resource scripts and the code.
#pragma once

#include "resources/DialogControlIds.h"

#define BX_CONTROLS_MANIFEST 2 // where the system looks for what the module's imports need
#define BX_ZOOM_MENU 139
#define BX_ABOUT_DIALOG 191
#define BX_ABOUT_LOGO 1201
#define BX_ABOUT_VERSION 1202
#define BX_ABOUT_HELP_LINK 1203
#define BX_ABOUT_WEB_LINK 1204
#define BX_ABOUT_SUPPORT_LINK 1205
#define BX_ABOUT_UPDATE_SWITCH 1206
#define BX_ABOUT_UPDATE_NOTE 1207
#define BX_ABOUT_UPDATE_LINK 1208
#define BX_ABOUT_GUIDE_LINK 1209
#define BX_WAIT_CURSOR 194
#define BX_LIGHT_SOURCE_TABLE_DIALOG 210
#define BX_DEBUG_IMAGE_DIALOG 211
#define BX_LIGHT_SOURCE_LIST 1167
#define BX_LIGHT_SOURCE_COUNT 1168
#define BX_DEBUG_CHOICE 1201
#define BX_DEBUG_ZOOM 1202
#define BX_DEBUG_DISPLAY 1203
#define BX_OPEN_HAND_CURSOR 240
#define BX_CLOSED_HAND_CURSOR 241
#define BX_ZOOM_IN_CURSOR 242
#define BX_ZOOM_OUT_CURSOR 243
#define BX_NO_ZOOM_CURSOR 244
#define BX_HIDE_EFFECT_CURSOR 245
#define BX_SHOW_EFFECT_CURSOR 246
#define BX_PROPERTY_LIST 16000
#define BX_TERMINOLOGY 16000

// Items of the zoom menu.
#define BX_ZOOM_TO_6 40017
#define BX_ZOOM_TO_12 40016
#define BX_ZOOM_TO_25 40015
#define BX_ZOOM_TO_33 40014
#define BX_ZOOM_TO_50 40013
#define BX_ZOOM_TO_66 40012
#define BX_ZOOM_TO_100 40011
#define BX_ZOOM_TO_200 40010
#define BX_ZOOM_TO_300 40009
#define BX_ZOOM_TO_400 40008
#define BX_ZOOM_TO_600 40007
#define BX_ZOOM_TO_800 40006
#define BX_ZOOM_TO_1000 40005
#define BX_ZOOM_TO_1200 40004
#define BX_ZOOM_TO_1600 40003
#define BX_ZOOM_ACTUAL_PIXELS 40018
#define BX_ZOOM_FIT_IN_VIEW 40019
#define BX_ZOOM_FIT_ON_SCREEN 40020

// Pictures of the main dialog; pictures/ has their sources.
#define BX_HIDE_EFFECTS_ICON 5
#define BX_ZOOM_GLASS_ICON 132
#define BX_PAN_HAND_ICON 133
#define BX_SIZE_GRIP_ICON 175
#define BX_SETTINGS_MENU_ICON 189
#define BX_SHOW_EFFECTS_ICON 222
#define BX_COMPARE_ICON 223
// What less and more of each parameter does.
#define BX_THRESHOLD_LESS 212
#define BX_THRESHOLD_MORE 213
#define BX_INTENSITY_LESS 104
#define BX_INTENSITY_MORE 103
#define BX_LENGTH_LESS 109
#define BX_LENGTH_MORE 110
#define BX_ANGLE_LESS 107
#define BX_ANGLE_MORE 108
#define BX_NUMBER_OF_POINTS_LESS 111
#define BX_NUMBER_OF_POINTS_MORE 112
#define BX_SPIKE_SHARPNESS_LESS 199
#define BX_SPIKE_SHARPNESS_MORE 200
#define BX_COLOR_SATURATION_LESS 114
#define BX_COLOR_SATURATION_MORE 115
#define BX_RAINBOW_INTENSITY_LESS 116
#define BX_RAINBOW_INTENSITY_MORE 117
#define BX_RAINBOW_FREQUENCY_LESS 118
#define BX_RAINBOW_FREQUENCY_MORE 119
#define BX_SECONDARY_SPIKES_LESS 120
#define BX_SECONDARY_SPIKES_MORE 121
#define BX_SOFT_FLARE_LESS 122
#define BX_SOFT_FLARE_MORE 123
// Bitmaps without alpha, for the template; those with premultiplied alpha for 100, 125, 150 and 200 % have
// the id plus 1, 2, 3 and 4 steps.
#define BX_PRODUCT_LOGO_BITMAP 105
#define BX_MAKER_LOGO_BITMAP 124
#define BX_ZOOM_OUT_BITMAP 128
#define BX_ZOOM_IN_BITMAP 130
#define BX_ZOOM_ARROW_BITMAP 131
#define BX_BITMAP_SCALE_STEP 1000

#ifndef RC_INVOKED
constexpr int kControlsManifestId = BX_CONTROLS_MANIFEST;
constexpr int kZoomMenuId = BX_ZOOM_MENU;
constexpr int kAboutDialogId = BX_ABOUT_DIALOG;
constexpr int kAboutLogoId = BX_ABOUT_LOGO;
constexpr int kAboutVersionId = BX_ABOUT_VERSION;
constexpr int kAboutHelpLinkId = BX_ABOUT_HELP_LINK;
constexpr int kAboutWebLinkId = BX_ABOUT_WEB_LINK;
constexpr int kAboutSupportLinkId = BX_ABOUT_SUPPORT_LINK;
constexpr int kAboutUpdateSwitchId = BX_ABOUT_UPDATE_SWITCH;
constexpr int kAboutUpdateNoteId = BX_ABOUT_UPDATE_NOTE;
constexpr int kAboutUpdateLinkId = BX_ABOUT_UPDATE_LINK;
constexpr int kAboutGuideLinkId = BX_ABOUT_GUIDE_LINK;
constexpr int kWaitCursorId = BX_WAIT_CURSOR;
constexpr int kLightSourceTableDialogId = BX_LIGHT_SOURCE_TABLE_DIALOG;
constexpr int kDebugImageDialogId = BX_DEBUG_IMAGE_DIALOG;
constexpr int kLightSourceListId = BX_LIGHT_SOURCE_LIST;
constexpr int kLightSourceCountId = BX_LIGHT_SOURCE_COUNT;
constexpr int kDebugChoiceId = BX_DEBUG_CHOICE;
constexpr int kDebugZoomId = BX_DEBUG_ZOOM;
constexpr int kDebugDisplayId = BX_DEBUG_DISPLAY;
constexpr int kOpenHandCursorId = BX_OPEN_HAND_CURSOR;
constexpr int kClosedHandCursorId = BX_CLOSED_HAND_CURSOR;
constexpr int kZoomInCursorId = BX_ZOOM_IN_CURSOR;
constexpr int kZoomOutCursorId = BX_ZOOM_OUT_CURSOR;
constexpr int kNoZoomCursorId = BX_NO_ZOOM_CURSOR;
constexpr int kHideEffectCursorId = BX_HIDE_EFFECT_CURSOR;
constexpr int kShowEffectCursorId = BX_SHOW_EFFECT_CURSOR;
constexpr int kPropertyListId = BX_PROPERTY_LIST;
constexpr int kTerminologyId = BX_TERMINOLOGY;
constexpr int kHideEffectsIconId = BX_HIDE_EFFECTS_ICON;
constexpr int kZoomGlassIconId = BX_ZOOM_GLASS_ICON;
constexpr int kPanHandIconId = BX_PAN_HAND_ICON;
constexpr int kSizeGripIconId = BX_SIZE_GRIP_ICON;
constexpr int kSettingsMenuIconId = BX_SETTINGS_MENU_ICON;
constexpr int kShowEffectsIconId = BX_SHOW_EFFECTS_ICON;
constexpr int kCompareIconId = BX_COMPARE_ICON;
constexpr int kThresholdLessId = BX_THRESHOLD_LESS, kThresholdMoreId = BX_THRESHOLD_MORE;
constexpr int kIntensityLessId = BX_INTENSITY_LESS, kIntensityMoreId = BX_INTENSITY_MORE;
constexpr int kLengthLessId = BX_LENGTH_LESS, kLengthMoreId = BX_LENGTH_MORE;
constexpr int kAngleLessId = BX_ANGLE_LESS, kAngleMoreId = BX_ANGLE_MORE;
constexpr int kNumberOfPointsLessId = BX_NUMBER_OF_POINTS_LESS,
              kNumberOfPointsMoreId = BX_NUMBER_OF_POINTS_MORE;
constexpr int kSpikeSharpnessLessId = BX_SPIKE_SHARPNESS_LESS,
              kSpikeSharpnessMoreId = BX_SPIKE_SHARPNESS_MORE;
constexpr int kColorSaturationLessId = BX_COLOR_SATURATION_LESS,
              kColorSaturationMoreId = BX_COLOR_SATURATION_MORE;
constexpr int kRainbowIntensityLessId = BX_RAINBOW_INTENSITY_LESS,
              kRainbowIntensityMoreId = BX_RAINBOW_INTENSITY_MORE;
constexpr int kRainbowFrequencyLessId = BX_RAINBOW_FREQUENCY_LESS,
              kRainbowFrequencyMoreId = BX_RAINBOW_FREQUENCY_MORE;
constexpr int kSecondarySpikesLessId = BX_SECONDARY_SPIKES_LESS,
              kSecondarySpikesMoreId = BX_SECONDARY_SPIKES_MORE;
constexpr int kSoftFlareLessId = BX_SOFT_FLARE_LESS, kSoftFlareMoreId = BX_SOFT_FLARE_MORE;
constexpr int kProductLogoBitmapId = BX_PRODUCT_LOGO_BITMAP;
constexpr int kMakerLogoBitmapId = BX_MAKER_LOGO_BITMAP;
constexpr int kZoomOutBitmapId = BX_ZOOM_OUT_BITMAP;
constexpr int kZoomInBitmapId = BX_ZOOM_IN_BITMAP;
constexpr int kZoomArrowBitmapId = BX_ZOOM_ARROW_BITMAP;
constexpr int kBitmapScaleStep = BX_BITMAP_SCALE_STEP;
#endif
