# The dialogs for diagnostic callers and what a run keeps for them.
brillatrix_test(debug_picture_tests
    LIBS render engine recording_diag
    SOURCES ../ui/viewers/DebugImageView.cpp viewers/KeptScene.cpp viewers/PictureTest.cpp)

# The module with a diagnostic caller.
if(WIN32)
    brillatrix_test(diagnostic_tests DESKTOP LIBS filter_host engine render storage diag ole32 shell32
        SOURCES plugin/ModuleFixture.cpp plugin/NightDocument.cpp storage/TemporaryFolder.cpp support/NightScene.cpp
                viewers/DiagnosticTest.cpp viewers/ModalDialog.cpp)
    add_dependencies(diagnostic_tests BrillatrixX64)
endif()

# Driven with real messages, while modal loops run.
if(WIN32)
    brillatrix_test(viewer_tests DESKTOP
        LIBS ui_viewers viewer_resources recording_diag system_objects
        SOURCES storage/TemporaryFolder.cpp support/WindowPicture.cpp
                viewers/ImageViewerTest.cpp viewers/KeptScene.cpp viewers/ModalDialog.cpp viewers/TableViewerTest.cpp)
endif()
