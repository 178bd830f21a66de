# The main dialog of the filter module, driven in the module as a person would.
brillatrix_test(dialog_tests TIMEOUT 300 LIBS filter_host engine render storage diag comctl32 ole32 shell32
    SOURCES dialog/DialogFixture.cpp dialog/SystemAnswers.cpp dialog/ControlTest.cpp
            dialog/KeyTest.cpp dialog/LeakTest.cpp dialog/OpenCloseTest.cpp dialog/SettingsTest.cpp dialog/ViewTest.cpp
            plugin/ModuleFixture.cpp
            plugin/NightDocument.cpp storage/TemporaryFolder.cpp support/NightScene.cpp support/WindowPicture.cpp
            ../plugin/ParameterSet.cpp)
add_dependencies(dialog_tests BrillatrixX64)
