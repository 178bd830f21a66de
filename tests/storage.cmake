# Diagnostics and persistence, both Windows only. SystemCalls.cpp takes the place of single system calls.
brillatrix_test(diag_tests DESKTOP LIBS diag
    SOURCES diag/BufferUsageTest.cpp diag/ErrorReportTest.cpp diag/LogFixture.cpp diag/LogRotationTest.cpp
            diag/LogTest.cpp diag/StackGuardTest.cpp diag/TestVersion.rc storage/TemporaryFolder.cpp storage/SystemCalls.cpp)
target_link_options(diag_tests PRIVATE -Wl,--wrap=malloc,--wrap=free)
brillatrix_test(storage_tests LIBS recording_diag storage
    SOURCES storage/AppFoldersTest.cpp storage/AtomicFileTest.cpp storage/ParameterFilesTest.cpp storage/ParameterSetFilesTest.cpp
            storage/UISettingsTest.cpp storage/TemporaryFolder.cpp storage/SystemCalls.cpp)
target_link_options(storage_tests PRIVATE -Wl,--wrap=fread)
