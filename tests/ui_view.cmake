# The view tools and the preview display, driven with real messages. FakePreview.cpp takes the place of the
# preview's images and its task; ViewDialog.cpp that of the menu call that would wait for a person.
brillatrix_test(view_tests
    LIBS ui_view view_resources recording_diag
    SOURCES support/WindowPicture.cpp ui/GdiCalls.cpp view/DisplayMouseTest.cpp view/DisplayPaintTest.cpp
            view/FakePreview.cpp view/HideToolTest.cpp view/ViewArithmeticTest.cpp view/ViewControlsTest.cpp view/ViewDialog.cpp)
