# Compiler settings that hold for every target.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)

set(BRILLATRIX_SANITIZE "" CACHE STRING "Sanitizers of a native build, comma-separated")
option(BRILLATRIX_FUZZ "Make libFuzzer programs of the fuzzing targets; needs clang" OFF)

# -ffp-contract=off: a fused multiply-add would give other integers on other machines.
add_library(brillatrix_options INTERFACE)
target_include_directories(brillatrix_options INTERFACE ${CMAKE_SOURCE_DIR})
target_compile_options(brillatrix_options INTERFACE
    -Wall -Wextra -Werror -Wno-multichar -ffp-contract=off -fno-strict-aliasing)
if(WIN32)
    target_compile_definitions(brillatrix_options INTERFACE
        WIN32_LEAN_AND_MEAN NOMINMAX _WIN32_WINNT=0x0601 WINVER=0x0601 __USE_MINGW_ANSI_STDIO=1)
    add_compile_options(-fstack-protector-strong)
    # No time of linking in the modules: the same sources give the same bytes.
    add_link_options(-fstack-protector-strong -static -static-libgcc -static-libstdc++ -Wl,--no-insert-timestamp)
endif()
if(BRILLATRIX_SANITIZE)
    add_compile_options(-fsanitize=${BRILLATRIX_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all -O1)
    add_link_options(-fsanitize=${BRILLATRIX_SANITIZE})
endif()
if(BRILLATRIX_FUZZ)
    add_compile_options(-fsanitize=fuzzer-no-link)
endif()

# A static library of one room, or of test support, with the project's options.
function(brillatrix_library name)
    add_library(${name} STATIC ${ARGN})
    target_link_libraries(${name} PUBLIC brillatrix_options)
endfunction()
