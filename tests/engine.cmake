brillatrix_test(engine_tests
    LIBS engine recording_diag
    SOURCES engine/AnalysisImageTest.cpp engine/BandOrderTest.cpp engine/DetectionTest.cpp engine/ImageBufferTest.cpp
        engine/LightSourceTableTest.cpp engine/TableBuildTest.cpp engine/TestImages.cpp)

if(WIN32)
    brillatrix_test(init_task_tests
        LIBS engine recording_diag system_objects
        SOURCES engine/InitTaskTest.cpp engine/TestImages.cpp)
endif()
