# The main dialog of the filter module, driven in the module as a person would.
set(dialog_driver dialog/DialogFixture.cpp dialog/SystemAnswers.cpp plugin/ModuleFixture.cpp plugin/NightDocument.cpp storage/TemporaryFolder.cpp
    support/NightScene.cpp)
set(dialog_libraries system_objects window_driver filter_host engine render storage diag comctl32 ole32 oleacc oleaut32 shell32)
brillatrix_test(dialog_tests DESKTOP TIMEOUT 300 LIBS ${dialog_libraries}
    SOURCES ${dialog_driver} dialog/ControlTest.cpp dialog/EditingTest.cpp dialog/KeyTest.cpp dialog/LinkTest.cpp
            dialog/OpenCloseTest.cpp dialog/SafetyTest.cpp dialog/SettingsTest.cpp dialog/ViewTest.cpp)
include(MakerAddresses)
set_source_files_properties(dialog/LinkTest.cpp PROPERTIES COMPILE_DEFINITIONS "${maker_addresses}")
add_dependencies(dialog_tests BrillatrixX64)

# What docs/make-dialog-pictures.sh runs.
add_executable(dialog_pictures ${dialog_driver} ../docs/DialogPictures.cpp)
target_link_libraries(dialog_pictures PRIVATE brillatrix_options ${dialog_libraries} gtest gtest_main)
add_dependencies(dialog_pictures BrillatrixX64)
