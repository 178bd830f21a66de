# The view tools and the preview display.
if(NOT WIN32)
    brillatrix_test(view_native_tests
        LIBS recording_diag
        SOURCES ../ui/pixels/PreviewGeometry.cpp ../ui/view/ViewCursor.cpp ../ui/view/ViewState.cpp ../ui/view/ViewZoom.cpp
                view/ViewArithmeticTest.cpp)
    return()
endif()

# Driven with real messages. ViewFixture.cpp takes the place of the preview's images and its task, and of the menu call
# that would wait for a person.
brillatrix_test(view_tests DESKTOP
    LIBS ui_view view_resources recording_diag system_objects window_driver
    SOURCES view/DisplayMouseTest.cpp view/DisplayPaintTest.cpp view/HideToolTest.cpp view/ViewArithmeticTest.cpp
            view/ViewControlsTest.cpp view/ViewFixture.cpp)
