// The view tools of the dialog: current tool, zoom and view, and the controls that show and set them.
// Dialog's thread.
#pragma once

#include "ui/view/ViewCursor.h"
#include "ui/view/ViewState.h"

#include <cstdint>
#include <windows.h>

enum ToolPicture { kPictureNormal, kPictureSelected, kPictureDisabled };

// Shows one of the pictures of a tool's icon or a zoom button; the dialog has the pictures.
using ShowToolPicture = void (*)(HWND dialog, int controlId, ToolPicture picture);

// What there is for the life of one dialog.
struct ViewTools {
    HWND dialog, display; // null while no dialog is attached
    ShowToolPicture showPicture;
    uint32_t tool;
    ViewState view;
    bool tableReady; // the light source table can be read
    bool isFitted;   // Fit in View was the last that set the zoom: another size of the display is fitted too
};

extern ViewTools gViewTools;

// Takes over the dialog's controls; `image` is the host's filter rectangle. The zoom is 100 and no tool is
// current; a stored effect tool gives way to Zoom, for it needs the light source table. Called by the preview
// display when it is attached.
void AttachViewTools(HWND dialog, HWND display, const IntRect &image, ShowToolPicture showPicture);
void DetachViewTools();

void RegisterViewTooltips(HWND dialog, HWND tooltipWindow);

// 0 only refreshes the pictures.
void SelectViewTool(uint32_t tool);
// Selects an effect tool, once the light source table can be read.
void SelectEffectTool(uint32_t tool);
// Answers the table's completion: enables the icons of the effect tools.
void EnableEffectTools();

// What a request or a painting shows now.
PreviewGeometry CurrentPreviewGeometry();

// All of these end in a preview request.
void SetZoom(double zoom);
void SetZoomAbout(double zoom, ViewPoint client);
void ZoomToClientRect(const IntRect &client);
void ZoomIn();
void ZoomOut();
void ShowActualPixels();
// The whole image, also when the display gets another size, until the zoom is changed.
void FitInView();
// Gives the dialog the work area of its monitor first.
void FitOnScreen();

// Moves the content by client pixels, or the view's centre to a scaled point. Nothing, and false, when the
// view is already there. With `request` false the preview request is left for later.
bool ScrollPreview(int32_t dx, int32_t dy);
bool CenterPreview(double x, double y, bool request = true);
void AskForPreview();

// After a change of the display's size.
void UpdateViewLayout();
// Text and buttons of the zoom, and the bars' ranges and positions.
void UpdateZoomControls();
void UpdateScrollBars();
// WM_HSCROLL and WM_VSCROLL of the dialog, from its preview's bars; others are not handled (false).
bool OnPreviewScroll(HWND bar, int scrollCode);
