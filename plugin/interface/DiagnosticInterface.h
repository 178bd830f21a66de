// What a diagnostic caller (a command-line host, a test) may ask of the module. The module exports no
// function for it: a request is a message to one of the two exported dialog procedures without a window,
//
//     DisplayLightSourceTableProc(nullptr, kDiagnosticLightCount, 0, 0)
//
// with a number in wParam and a pointer in lParam, as given at each message. Both procedures take every
// message. The answer is the procedure's result; 0 also for a message that the module does not know, for a
// null pointer where one is needed, and for any message of Windows' own.
//
// All of it is called on the host's thread, between calls of PluginMain. Say what to keep before Start; ask
// after a Start that ended with 0. What was kept lives until Finish, the next Start, or kDiagnosticKeep with
// 0, whichever comes first; before and after that there are no lights and no pictures. Nothing is kept, and
// nothing of this costs anything, unless it was asked for.
//
// The viewers show the same: open them, while it lives, on the module's handle with
//
//     DialogBoxParamA(module, MAKEINTRESOURCEA(kLightSourceTableDialogId), owner,
//     displayLightSourceTableProc, 0) DialogBoxParamA(module, MAKEINTRESOURCEA(kDebugImageDialogId), owner,
//     debugImageProc, 0)
//
// (ids in resources/ResourceIds.h).
#pragma once

#include <cstddef>
#include <cstdint>

// Answers kDiagnosticVersionNumber. Ask it first: a module without these messages answers 0.
constexpr uint32_t kDiagnosticVersion = 0xB100;
constexpr uint32_t kDiagnosticVersionNumber = 1;

// wParam: what to keep from the next Start on, a sum of the values below; it holds until it is changed.
// Answers 1. With 0 what is kept now is given back at once.
constexpr uint32_t kDiagnosticKeep = 0xB101;
constexpr uint32_t kKeepLights = 1;
constexpr uint32_t kKeepImages = 2; // up to 30 MB; the lights are kept with them

// Answers the number of light sources.
constexpr uint32_t kDiagnosticLightCount = 0xB102;

// One light source, brightest first in the order of the table.
struct DiagnosticLight {
    uint32_t rank;                // index in the table; 0 is the brightest
    uint32_t state;               // 0 hidden, 1 normal, 2 always gets a star
    uint32_t drawn;               // 1 when the run's threshold and the light's state gave it a star, else 0
    int32_t xQuarters, yQuarters; // centre in quarter pixels of the document
    int32_t radiusSquared;        // in pixels squared
    uint32_t brightness;          // fraction of full scale; 4294967294 is 1.0
    uint32_t red, green, blue;    // fractions likewise
};
static_assert(sizeof(DiagnosticLight) == 40 && alignof(DiagnosticLight) == 4);
static_assert(offsetof(DiagnosticLight, xQuarters) == 12 && offsetof(DiagnosticLight, brightness) == 24);

// wParam: room for how many lights; lParam: DiagnosticLight *. Copies the first ones that there is room for
// and answers how many.
constexpr uint32_t kDiagnosticCopyLights = 0xB103;

// The viewer's text. wParam: 1 starts again with the count line, 0 goes on with the next light; lParam:
// DiagnosticLine *. Answers 1, or 0 after the last line; the text is then left alone. The count line ends
// with two line feeds, the others with none.
constexpr uint32_t kDiagnosticLine = 0xB104;
struct DiagnosticLine {
    char text[256]; // terminated
};

// The pictures of the debug image viewer, which are there when kKeepImages was asked for:
// 0 the analysis image (the picture, reduced to at most 1200 pixels on its longer side);
// 1 the same, with what is not selected and not covered shaded and flat areas marked;
// 2 the lights found, as circles on the darkened picture: dashed when hidden, grey when too faint for a star;
// 3 the star and flare of one light in the middle of its pixel, as the run's settings draw them.
constexpr uint32_t kDiagnosticPictures = 4;

// wParam: 0 to 3; lParam: DiagnosticPicture *. With null `pixels` only the size is told. Otherwise
// `pixelBytes` must be at least width x height x 4 of the picture, and it is filled: rows from the top
// without gaps, four bytes a pixel: blue, green, red, 255. Answers 1; or 0, the record left alone, when there
// is no such picture, when there is too little room, or when memory runs out.
constexpr uint32_t kDiagnosticCopyPicture = 0xB105;
struct DiagnosticPicture {
    int32_t width, height; // told
    uint64_t pixelBytes;   // of `pixels`
    uint8_t *pixels;       // the caller's, or null
};
static_assert(sizeof(DiagnosticPicture) == 24 && offsetof(DiagnosticPicture, pixels) == 16);
