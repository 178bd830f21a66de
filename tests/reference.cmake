brillatrix_test(reference_tests
    LIBS render engine recording_diag
    SOURCES
        reference/ArithmeticTest.cpp
        reference/Cases.cpp
        reference/ReferenceBlend.cpp
        reference/ReferenceDetect.cpp
        reference/ReferenceLayouts.cpp
        reference/ReferenceMath.cpp
        reference/ReferenceProfile.cpp
        reference/ReferenceReduce.cpp
        reference/ReferenceRefine.cpp
        reference/ReferenceRender.cpp
        reference/ReferenceSamplers.cpp
        reference/ReferenceStamps.cpp
        reference/ReferenceTable.cpp
        reference/RenderTest.cpp
        reference/StampTest.cpp)
