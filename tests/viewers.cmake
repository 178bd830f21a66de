# The dialogs for diagnostic callers and what a run keeps for them.
brillatrix_test(debug_picture_tests
    LIBS render engine recording_diag
    SOURCES viewers/KeptScene.cpp viewers/PictureTest.cpp)

# The module with a diagnostic caller.
if(WIN32)
    brillatrix_test(diagnostic_tests DESKTOP LIBS system_objects window_driver filter_host engine render storage diag ole32 shell32
        SOURCES plugin/ModuleFixture.cpp plugin/NightDocument.cpp storage/TemporaryFolder.cpp support/NightScene.cpp
                viewers/DiagnosticTest.cpp)
    add_dependencies(diagnostic_tests BrillatrixX64)
endif()

# Driven with real messages, while modal loops run.
if(WIN32)
    brillatrix_test(viewer_tests DESKTOP
        LIBS ui_viewers viewer_resources recording_diag system_objects window_driver
        SOURCES storage/TemporaryFolder.cpp viewers/ImageViewerTest.cpp viewers/KeptScene.cpp viewers/TableViewerTest.cpp)
endif()
