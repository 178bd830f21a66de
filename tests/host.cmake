# The host: picture files, records and procedures, command line and program.
add_library(invert_filter MODULE host/InvertFilter.cpp host/InvertServices.cpp host/InvertFilter.rc)
target_link_libraries(invert_filter PRIVATE brillatrix_options)
set_target_properties(invert_filter PROPERTIES PREFIX "" SUFFIX ".8bf" OUTPUT_NAME InvertFilter)

brillatrix_test(host_tests DESKTOP
    LIBS system_objects filter_host
    SOURCES
        host/TestFiles.cpp host/PlayedFilter.cpp
        host/PictureFilesTest.cpp host/ImageAccessTest.cpp host/FilterRunTest.cpp host/MisuseTest.cpp
        host/PropertyListTest.cpp host/OptionsTest.cpp host/ProgramTest.cpp
        host/BatchTest.cpp)
add_dependencies(host_tests brillatrix invert_filter)
if(TARGET BrillatrixX64)
    add_dependencies(host_tests BrillatrixX64)
endif()
