# GoogleTest from the system's source package, built with each build's own compiler; on Windows the library that comes
# with the compiler.
if(EXISTS /usr/src/googletest/CMakeLists.txt)
    set(INSTALL_GTEST OFF CACHE BOOL "" FORCE)
    add_subdirectory(/usr/src/googletest ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)
elseif(CMAKE_HOST_WIN32)
    find_package(GTest REQUIRED)
    add_library(gtest ALIAS GTest::gtest)
    add_library(gtest_main ALIAS GTest::gtest_main)
else()
    message(FATAL_ERROR "GoogleTest's sources are missing: install the package googletest")
endif()
include(GoogleTest)

if(WIN32)
    set(BRILLATRIX_BUILD_NAME windows)
else()
    set(BRILLATRIX_BUILD_NAME native)
endif()

# What nearly every test includes, read once: most of a clean build's time was spent on it. Every source includes what it
# uses all the same: a compiler cache, which knows no precompiled headers, builds without.
set(precompiled_tests ON)
if(CMAKE_CXX_COMPILER_LAUNCHER)
    set(precompiled_tests OFF)
endif()
if(precompiled_tests)
    file(GENERATE OUTPUT ${CMAKE_BINARY_DIR}/precompiled_tests.cpp CONTENT "")
    add_library(precompiled_tests OBJECT ${CMAKE_BINARY_DIR}/precompiled_tests.cpp)
    target_link_libraries(precompiled_tests PRIVATE brillatrix_options gtest)
    target_compile_options(precompiled_tests PRIVATE -O1)
    target_precompile_headers(precompiled_tests PRIVATE <gtest/gtest.h> <algorithm> <filesystem> <functional> <string> <vector>
        $<$<BOOL:${WIN32}>:<windows.h$<ANGLE-R>>)
endif()

# One test program: brillatrix_test(name [DESKTOP] LIBS lib... SOURCES file...). Each GoogleTest case becomes a ctest
# test, named after the build, the program and the case. DESKTOP: its cases need the focus, the pointer or the clipboard
# for themselves, so only one of them runs at a time. DESKTOP_CASES filter: the same, of single cases.
function(brillatrix_test name)
    cmake_parse_arguments(T "DESKTOP" "TIMEOUT;DESKTOP_CASES" "LIBS;SOURCES" ${ARGN})
    if(NOT T_TIMEOUT)
        set(T_TIMEOUT 120)
    endif()
    if(T_DESKTOP)
        set(T_DESKTOP_CASES "*")
    endif()
    add_executable(${name} ${T_SOURCES})
    target_link_libraries(${name} PRIVATE brillatrix_options ${T_LIBS} gtest gtest_main)
    target_compile_options(${name} PRIVATE -O1) # built faster than they would run faster
    if(precompiled_tests)
        # The compiler forgets that a precompiled header was the system's, and suspects the standard strings.
        target_compile_options(${name} PRIVATE -Wno-array-bounds -Wno-restrict -Wno-stringop-overflow -Wno-stringop-overread)
        target_precompile_headers(${name} REUSE_FROM precompiled_tests)
    endif()
    # A program whose heap is damaged may crash under Wine and yet end with 0.
    set(common TEST_PREFIX ${BRILLATRIX_BUILD_NAME}.${name}. DISCOVERY_TIMEOUT 120 DISCOVERY_MODE PRE_TEST)
    set(properties PROPERTIES TIMEOUT ${T_TIMEOUT} FAIL_REGULAR_EXPRESSION ": Failure|starting debugger")
    if(T_DESKTOP_CASES) # costly, and so begun early: one after the other they take as long as all others
        gtest_discover_tests(${name} ${common} TEST_FILTER "${T_DESKTOP_CASES}" ${properties} RESOURCE_LOCK desktop COST 10)
    endif()
    if(NOT T_DESKTOP)
        gtest_discover_tests(${name} ${common} TEST_FILTER "-${T_DESKTOP_CASES}" ${properties})
    endif()
endfunction()
