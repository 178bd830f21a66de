# The view tools and the preview display.
if(NOT WIN32)
    brillatrix_test(view_native_tests
        LIBS recording_diag
        SOURCES ../ui/pixels/PreviewGeometry.cpp ../ui/view/ViewCursor.cpp ../ui/view/ViewState.cpp ../ui/view/ViewZoom.cpp
                view/ViewArithmeticTest.cpp)
    return()
endif()

# Driven with real messages. FakePreview.cpp takes the place of the preview's images and its task; ViewDialog.cpp that
# of the menu call that would wait for a person.
brillatrix_test(view_tests DESKTOP
    LIBS ui_view view_resources recording_diag system_objects
    SOURCES support/WindowPicture.cpp view/DisplayMouseTest.cpp view/DisplayPaintTest.cpp
            view/FakePreview.cpp view/HideToolTest.cpp view/ViewArithmeticTest.cpp view/ViewControlsTest.cpp view/ViewDialog.cpp)

# The display with the real preview behind it. Leaves pictures beside the program.
brillatrix_test(live_view_tests DESKTOP
    LIBS ui_view view_resources filter_host test_support recording_diag
    SOURCES support/PhotoImage.cpp support/WindowPicture.cpp view/LiveViewTest.cpp view/ViewDialog.cpp)
target_compile_definitions(live_view_tests PRIVATE BRILLATRIX_SOURCE_DIR="${CMAKE_SOURCE_DIR}")
