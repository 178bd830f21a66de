# Fuzzing targets, where no Windows is needed: brillatrix_fuzz(name RUNS source LIBS lib...). The fuzz preset makes
# libFuzzer programs of them, for fuzz/run.sh; elsewhere they run a few seeded cases, as a test.
function(brillatrix_fuzz name runs source)
    add_executable(fuzz_${name} ${source})
    target_link_libraries(fuzz_${name} PRIVATE brillatrix_options ${ARGN})
    if(BRILLATRIX_FUZZ)
        target_link_options(fuzz_${name} PRIVATE -fsanitize=fuzzer)
        add_dependencies(fuzz_targets fuzz_${name})
        return()
    endif()
    target_sources(fuzz_${name} PRIVATE fuzz/SeededRuns.cpp)
    add_test(NAME native.fuzz.${name}
        COMMAND fuzz_${name} ${CMAKE_CURRENT_SOURCE_DIR}/fuzz/corpus/${name} ${runs})
    set_tests_properties(native.fuzz.${name} PROPERTIES TIMEOUT 300)
endfunction()

add_custom_target(fuzz_targets)
brillatrix_fuzz(detection 200 fuzz/DetectionFuzz.cpp engine recording_diag)
brillatrix_fuzz(render 700 fuzz/RenderFuzz.cpp render engine recording_diag)

# The host's readers that know nothing of Windows.
brillatrix_library(portable_readers EXCLUDE_FROM_ALL ../host/base/ByteStream.cpp ../host/metadata/ExifTree.cpp
    ../host/metadata/IptcBlock.cpp ../host/metadata/JpegSegments.cpp ../host/metadata/TiffDirectory.cpp
    ../host/module/EnableInfo.cpp ../host/module/PiPL.cpp)
target_compile_definitions(portable_readers PRIVATE _stricmp=strcasecmp)
brillatrix_fuzz(metadata 20000 fuzz/MetadataFuzz.cpp portable_readers)
