// A dialog with the preview display and the controls of the view tools, driven with the messages that a
// user's input makes.
#pragma once

#include "engine/table/LightSourceTable.h"
#include "ui/display/PreviewDisplay.h"

#include <map>
#include <windows.h>

struct ViewDialog {
    HWND window = nullptr, display = nullptr;
    int previewRequests = 0;             // kMsgRequestPreview handled
    void (*onRequest)() = nullptr;       // called for each
    std::map<int, ToolPicture> pictures; // shown last, by control
};

// Opens it with a display of that client size on an image of the filter rectangle `image`, with an empty
// light source table. Every message that waits is handled.
bool OpenViewDialog(ViewDialog *dialog, const IntRect &image, int displayWidth = 402,
                    int displayHeight = 302);
// The same on a real image, with the light source table that there is.
bool OpenViewDialogOn(ViewDialog *dialog, const ImageBuffer &image, int displayWidth, int displayHeight);
void CloseViewDialog(ViewDialog *dialog);
// Makes `sources` the light source table, and announces it.
void SetLightSources(ViewDialog *dialog, LightSource *sources, uint32_t count);

void PumpMessages();
// Lets time pass, with messages handled.
void PumpFor(DWORD milliseconds);
// What the keyboard state says until it is called again.
void HoldKeys(bool alt, bool ctrl);
void SendMouse(HWND window, UINT message, int x, int y, WPARAM keys = 0);
// Press, moves to each point, release. Client coordinates.
void ClickDisplay(const ViewDialog &dialog, int x, int y);
void DragDisplay(const ViewDialog &dialog, POINT from, POINT to);
LRESULT WheelDisplay(const ViewDialog &dialog, int x, int y, int delta, WPARAM keys = 0);

// The zoom menu: its calls are kept, and this is what the user picks.
struct MenuAnswer {
    int command = 0;
    DWORD error = 0; // with command 0: the call failed
};
extern MenuAnswer gMenuAnswer;
struct AskedMenu {
    int x, y;
    UINT flags;
    HWND owner;
    std::map<int, std::string> items; // command and label
    int separators;
};
// The call made since the last one; items empty when there was none.
AskedMenu TakeAskedMenu();
