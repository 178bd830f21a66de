// A dialog with nothing but the eleven pairs, driven by the tests with the messages that a user's input
// makes.
#pragma once

#include "render/ParameterSet.h"
#include "ui/fields/ParameterControls.h"
#include "ui/fields/ParameterTable.h"

#include <gtest/gtest.h>

#include <string>
#include <windows.h>

struct PairDialog {
    HWND window = nullptr;
    HWND tooltips = nullptr;
    HWND otherControl = nullptr; // takes the focus off the pairs
    ParameterSet parameters = {};
    int changesSent = 0; // private messages that announce a changed parameter
};

// Rows listed in `without` (bit per index) get no controls.
bool OpenPairDialog(PairDialog *dialog, const ParameterSet &parameters, unsigned without = 0);
// Binds an open dialog again, with the focus off the pairs.
void ResetPairDialog(PairDialog *dialog, const ParameterSet &parameters);
void ClosePairDialog(PairDialog *dialog);

// Opening the dialog is the slow part, so that the tests share it.
class PairTest : public testing::Test {
protected:
    void SetUp() override {
        if (dialog.window)
            ResetPairDialog(&dialog, kDefaultParameters);
        else
            ASSERT_TRUE(OpenPairDialog(&dialog, kDefaultParameters));
    }
    static void TearDownTestSuite() { ClosePairDialog(&dialog); }

    static HWND Edit(int row) { return gParameterControls[row].edit; }
    static HWND Trackbar(int row) { return gParameterControls[row].trackbar; }

    static inline PairDialog dialog;
};

// Handles every message that waits.
void PumpMessages();

std::string EditText(int row);
int TrackbarPositionOf(int row);
// A key, as the keyboard sends it to the focused window.
void PressKey(HWND window, WPARAM key, int repeatCount = 1);
void TypeText(HWND window, const char *text);
void HoldCtrl(bool down);
// Error beeps since the last call; none sounds.
int TakeBeeps();
// Message with a point in client coordinates.
void SendMouse(HWND window, UINT message, WPARAM buttons, POINT point);
RECT ThumbOf(int row);
// Where on the trackbar its thumb's centre would stand for a value.
POINT PointForValue(int row, int value);
