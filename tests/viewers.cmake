# The dialogs for diagnostic callers and what a run keeps for them.
brillatrix_test(debug_picture_tests
    LIBS render engine recording_diag
    SOURCES ../ui/DebugImageView.cpp viewers/KeptScene.cpp viewers/PictureTest.cpp)
