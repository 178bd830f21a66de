# Fuzzing targets. brillatrix_fuzz(name RUNS source... [LIBS lib...]): where no Windows is needed. The fuzz preset makes
# libFuzzer programs of them, for fuzz/run.sh; elsewhere they run a few seeded cases, as a test.
# brillatrix_windows_fuzz: the same for a part that needs Windows; there fuzz/run.sh uses the seeded runs too.
function(brillatrix_fuzz_program name)
    cmake_parse_arguments(F "" "" "LIBS" ${ARGN})
    add_executable(fuzz_${name} ${F_UNPARSED_ARGUMENTS})
    target_link_libraries(fuzz_${name} PRIVATE brillatrix_options ${F_LIBS})
    if(BRILLATRIX_FUZZ)
        target_link_options(fuzz_${name} PRIVATE -fsanitize=fuzzer)
    else()
        target_sources(fuzz_${name} PRIVATE fuzz/SeededRuns.cpp)
    endif()
    add_dependencies(fuzz_targets fuzz_${name})
endfunction()
function(brillatrix_fuzz_test name runs)
    add_test(NAME ${BRILLATRIX_BUILD_NAME}.fuzz.${name}
        COMMAND fuzz_${name} ${CMAKE_CURRENT_SOURCE_DIR}/fuzz/corpus/${name} ${runs})
    set_tests_properties(${BRILLATRIX_BUILD_NAME}.fuzz.${name} PROPERTIES TIMEOUT 1800 ${ARGN}
        PASS_REGULAR_EXPRESSION "runs held" FAIL_REGULAR_EXPRESSION "NOT SO|HANGS|Unhandled|Sanitizer|runtime error")
endfunction()
function(brillatrix_fuzz name runs)
    if(NOT WIN32)
        brillatrix_fuzz_program(${name} ${ARGN})
        brillatrix_fuzz_test(${name} ${runs})
    endif()
endfunction()
function(brillatrix_windows_fuzz name runs)
    if(WIN32)
        brillatrix_fuzz_program(${name} ${ARGN})
        brillatrix_fuzz_test(${name} ${runs})
    endif()
endfunction()

add_custom_target(fuzz_targets)
brillatrix_fuzz(detection 140 fuzz/DetectionFuzz.cpp LIBS engine recording_diag)
brillatrix_fuzz(render 560 fuzz/RenderFuzz.cpp LIBS render engine recording_diag)

# The host's readers that know nothing of Windows.
brillatrix_library(portable_readers EXCLUDE_FROM_ALL ../host/base/ByteStream.cpp ../host/metadata/ExifTree.cpp
    ../host/metadata/IptcBlock.cpp ../host/metadata/JpegSegments.cpp ../host/metadata/TiffDirectory.cpp
    ../host/module/EnableInfo.cpp ../host/module/PiPL.cpp)
target_compile_definitions(portable_readers PRIVATE _stricmp=strcasecmp)
brillatrix_fuzz(metadata 20000 fuzz/MetadataFuzz.cpp LIBS portable_readers)

brillatrix_windows_fuzz(files 250 fuzz/FilesFuzz.cpp ../web/UpdateNotice.cpp ../web/UpdateRecord.cpp ../web/UpdateRequest.cpp
    ../plugin/parameters/ParameterAccessor.cpp ../plugin/record/PluginState.cpp storage/TemporaryFolder.cpp
    update/LoopbackServer.cpp LIBS recording_diag storage filter_host render engine ws2_32)
brillatrix_windows_fuzz(script 3000 fuzz/ScriptFuzz.cpp ../plugin/parameters/ParameterAccessor.cpp
    ../plugin/parameters/PersistentBlock.cpp ../plugin/parameters/ScriptReader.cpp ../plugin/parameters/ScriptWriter.cpp
    ../plugin/record/HostCall.cpp ../plugin/record/PluginState.cpp
    LIBS recording_diag storage render engine)
brillatrix_windows_fuzz(pictures 400 fuzz/PicturesFuzz.cpp host/TestFiles.cpp LIBS filter_host gtest psapi)
brillatrix_windows_fuzz(host 250 fuzz/HostFuzz.cpp plugin/NightDocument.cpp storage/TemporaryFolder.cpp support/NightScene.cpp
    LIBS system_objects filter_host engine render storage diag ole32 shell32)
if(WIN32)
    add_dependencies(fuzz_host BrillatrixX64)
endif()
# The dialog's and the drivers' sources as in dialog.cmake.
if(WIN32)
    brillatrix_windows_fuzz(dialog 12 fuzz/DialogFuzz.cpp ${dialog_driver} LIBS ${dialog_libraries} gtest)
    add_dependencies(fuzz_dialog BrillatrixX64)
    set_tests_properties(windows.fuzz.dialog PROPERTIES RESOURCE_LOCK desktop COST 20)
endif()
