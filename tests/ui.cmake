# The dialog's controls and commands, driven with real messages. The tests take the place of the calls that would wait for
# a person.
brillatrix_test(ui_tests DESKTOP
    LIBS plugin_resources ui_settings recording_diag system_objects window_driver
    SOURCES storage/TemporaryFolder.cpp ui/NumberTextTests.cpp ui/ParameterPairTests.cpp ui/ParameterSetListTests.cpp
            ui/WindowPlacementTests.cpp)
# The main dialog's look, on its template. DialogLayoutTest.cpp takes the place of the call that opens a browser.
brillatrix_test(look_tests DESKTOP
    LIBS plugin_resources ui_about ui_look ui_view ui_preview web render engine storage diag system_objects window_driver
    SOURCES ui/DialogLayoutTest.cpp)
