// What the dialogs remember between runs: one process-wide record, kept in "UISettings.bin" in the settings
// folder. Touched on the host's thread only, and not locked.
#pragma once

#include <cstdint>

// Screen pixels, right and bottom excluded. All zero: the window was never placed.
struct ScreenRect {
    int32_t left, top, right, bottom;
};

// The file's image.
struct UISettings {
    uint16_t version[4];
    ScreenRect dialogRect;
    uint32_t viewTool;    // 1 Pan, 2 Zoom, 3 Hide Effects, 4 Show Hidden Effects
    uint32_t previewFlag; // 1 on, 0 off
    ScreenRect debugViewerRect;
    uint32_t debugDisplayChoice; // 0 to 3
};
static_assert(sizeof(UISettings) == 52);

constexpr uint32_t kFirstViewTool = 1, kDefaultViewTool = 2, kLastViewTool = 4;
constexpr uint32_t kLastDebugDisplayChoice = 3;

constexpr UISettings kDefaultUISettings = {
    {0, 0, 0, 11}, {0, 0, 0, 0}, kDefaultViewTool, 1, {0, 0, 0, 0}, 0,
};

// Reads the file into the record. A file that is missing, short or of another version changes nothing; the
// last two are reported. A field that cannot be right takes its default. Returns the settings-loaded flag,
// which a read that succeeded sets for good.
bool LoadUISettings();
// Replaces the file whole. Failures are reported.
bool SaveUISettings();

ScreenRect GetDialogRect();
void SetDialogRect(const ScreenRect &rect);
uint32_t GetViewTool();
void SetViewTool(uint32_t tool);
uint32_t GetPreviewFlag();
void SetPreviewFlag(uint32_t flag);
ScreenRect GetDebugViewerRect();
void SetDebugViewerRect(const ScreenRect &rect);
uint32_t GetDebugDisplayChoice();
void SetDebugDisplayChoice(uint32_t choice);
bool AreUISettingsLoaded();

inline bool IsEmptyScreenRect(const ScreenRect &r) {
    return r.left >= r.right || r.top >= r.bottom;
}
