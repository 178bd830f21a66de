brillatrix_test(engine_tests
    LIBS engine recording_diag
    SOURCES engine/AnalysisImageTest.cpp engine/DetectionTest.cpp engine/HideEffectsTest.cpp
        engine/ImageBufferTest.cpp engine/LightSourceTableTest.cpp engine/RadialProfileTest.cpp
        engine/ShapeSamplerTest.cpp engine/TableBuildTest.cpp engine/TestImages.cpp)
