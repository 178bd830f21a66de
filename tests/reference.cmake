brillatrix_test(reference_tests TIMEOUT 600
    LIBS render plain_render engine recording_diag
    SOURCES
        reference/ArithmeticTest.cpp
        reference/Cases.cpp
        reference/DetectPartsTest.cpp
        reference/DetectTest.cpp
        reference/NightScene.cpp
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
        reference/SceneTest.cpp
        reference/Scenes.cpp
        reference/TableTest.cpp)
