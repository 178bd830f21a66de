# The dialog's controls, driven with real messages; no window needs to be seen.
brillatrix_test(ui_tests
    LIBS ui recording_diag
    SOURCES ui/NumberTextTests.cpp ui/PairDialog.cpp ui/PairPictureTests.cpp ui/ParameterPairTests.cpp ui/WindowPlacementTests.cpp)
