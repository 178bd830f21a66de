# The preview's images and its task. The arithmetic and the pixels also run natively, from their sources.
set(preview_portable
    ../ui/pixels/PreviewDrawing.cpp ../ui/pixels/PreviewFilling.cpp ../ui/pixels/PreviewGeometry.cpp ../ui/pixels/PreviewReduction.cpp
    ../ui/pixels/PreviewStore.cpp)
if(WIN32)
    brillatrix_test(preview_tests TIMEOUT 900
        LIBS ui_preview filter_host system_objects test_support recording_diag
        SOURCES preview/GeometryTest.cpp preview/PreparationTest.cpp preview/PreviewRun.cpp
                preview/StoreTest.cpp preview/TaskTest.cpp
                preview/TruthTest.cpp support/PhotoImage.cpp)
    target_compile_definitions(preview_tests PRIVATE BRILLATRIX_SOURCE_DIR="${CMAKE_SOURCE_DIR}")
else()
    brillatrix_test(preview_native_tests
        LIBS engine test_support recording_diag
        SOURCES ${preview_portable} preview/GeometryTest.cpp preview/StoreTest.cpp)
endif()
