// Ids of the main dialog's controls and of its keyboard commands, shared by the resource script and the code.
#pragma once

// The size of the template, in dialog units.
#define BX_DIALOG_WIDTH 497
#define BX_DIALOG_HEIGHT 433

// Controls. The pairs of edit field and trackbar are in ui/fields/ParameterTable.cpp.
#define BX_ID_PREVIEW_ON 1002
#define BX_ID_HELP 1000
#define BX_ID_SETTINGS_COMBO 1023
#define BX_ID_VERTICAL_BAR 1028
#define BX_ID_HORIZONTAL_BAR 1030
#define BX_ID_PROGRESS 1031
#define BX_ID_PREVIEW_DISPLAY 1040
#define BX_ID_ZOOM_OUT 1042
#define BX_ID_PAN_TOOL 1043
#define BX_ID_ZOOM_TOOL 1044
#define BX_ID_ZOOM_IN 1045
#define BX_ID_SETTINGS_PANEL 1046
#define BX_ID_PREVIEW_FRAME 1049
#define BX_ID_SETTINGS_MENU 1050
#define BX_ID_SPIKES_GROUP 1079
#define BX_ID_COLOR_GROUP 1080
#define BX_ID_SECONDARY_GROUP 1081
#define BX_ID_MAKER_LOGO 1082
#define BX_ID_CORNER_ICON 1083
#define BX_ID_PRODUCT_LOGO 1084
#define BX_ID_ZOOM_TEXT 1085
#define BX_ID_ZOOM_ARROW 1087
#define BX_ID_EFFECTS_ONLY 1122
#define BX_ID_HIDE_TOOL 1123
#define BX_ID_PAN_LABEL 1169
#define BX_ID_ZOOM_LABEL 1170
#define BX_ID_HIDE_LABEL 1171
#define BX_ID_EFFECT_COMBO 1176
#define BX_ID_EFFECT_LABEL 1179
#define BX_ID_SHOW_TOOL 1184
#define BX_ID_SHOW_LABEL 1185
#define BX_ID_UPDATE_LINK 1190 // not in the template

#define BX_DIALOG_ACCELERATORS 190

// Commands of the accelerator table.
#define BX_CMD_ANGLE 40048
#define BX_CMD_COLOR_SATURATION 40049
#define BX_CMD_PAN 40050
#define BX_CMD_INTENSITY 40051
#define BX_CMD_LENGTH 40052
#define BX_CMD_ZOOM 40053
#define BX_CMD_NUMBER_OF_POINTS 40054
#define BX_CMD_PREVIEW 40055
#define BX_CMD_RAINBOW_FREQUENCY 40056
#define BX_CMD_RAINBOW_INTENSITY 40057
#define BX_CMD_SECONDARY_INTENSITY 40059
#define BX_CMD_SETTINGS 40060
#define BX_CMD_SOFT_FLARE 40061
#define BX_CMD_ZOOM_IN 40062
#define BX_CMD_ZOOM_OUT 40063
#define BX_CMD_ZOOM_MENU 40064
#define BX_CMD_DISPLAY 40066
#define BX_CMD_FIT_IN_VIEW 40070
#define BX_CMD_FIT_ON_SCREEN 40072
#define BX_CMD_SPIKE_SHARPNESS 40077
#define BX_CMD_EFFECTS_ONLY 40079
#define BX_CMD_HIDE 40081
#define BX_CMD_SETTINGS_MENU 40083
#define BX_CMD_HELP 40085
#define BX_CMD_THRESHOLD 40088
#define BX_CMD_EFFECT 40090
#define BX_CMD_SHOW 40092

#ifndef RC_INVOKED
constexpr wchar_t kMainDialogName[] = L"BRILLATRIXDIALOG_ADVANCED";
constexpr int kDialogAcceleratorsId = BX_DIALOG_ACCELERATORS;

constexpr int kPreviewOnId = BX_ID_PREVIEW_ON;
constexpr int kHelpId = BX_ID_HELP;
constexpr int kProgressId = BX_ID_PROGRESS;
constexpr int kSettingsPanelId = BX_ID_SETTINGS_PANEL;
constexpr int kPreviewFrameId = BX_ID_PREVIEW_FRAME;
constexpr int kSettingsMenuIconControlId = BX_ID_SETTINGS_MENU;
constexpr int kSpikesGroupId = BX_ID_SPIKES_GROUP, kColorGroupId = BX_ID_COLOR_GROUP,
              kSecondaryGroupId = BX_ID_SECONDARY_GROUP;
constexpr int kMakerLogoId = BX_ID_MAKER_LOGO;
constexpr int kCornerIconId = BX_ID_CORNER_ICON;
constexpr int kProductLogoId = BX_ID_PRODUCT_LOGO;
constexpr int kZoomArrowId = BX_ID_ZOOM_ARROW;
constexpr int kEffectsOnlyId = BX_ID_EFFECTS_ONLY;
constexpr int kPanLabelId = BX_ID_PAN_LABEL, kZoomLabelId = BX_ID_ZOOM_LABEL,
              kHideLabelId = BX_ID_HIDE_LABEL, kShowLabelId = BX_ID_SHOW_LABEL;
constexpr int kEffectComboId = BX_ID_EFFECT_COMBO;
constexpr int kEffectLabelId = BX_ID_EFFECT_LABEL;
constexpr int kUpdateLinkId = BX_ID_UPDATE_LINK;
#endif
