# Real photos; they lie outside the project, and without them these tests are skipped.
if(WIN32)
    brillatrix_test(photo_tests
        LIBS filter_host engine recording_diag
        SOURCES photos/PhotoTest.cpp support/PhotoImage.cpp
        TIMEOUT 1800)
    target_compile_definitions(photo_tests PRIVATE BRILLATRIX_SOURCE_DIR="${CMAKE_SOURCE_DIR}")
endif()
