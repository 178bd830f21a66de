brillatrix_test(reference_tests TIMEOUT 600
    LIBS render engine recording_diag
    SOURCES
        reference/ArithmeticTest.cpp
        reference/Cases.cpp
        reference/detect/DetectTest.cpp
        reference/NightScene.cpp
        reference/ReferenceBlend.cpp
        reference/detect/ReferenceDetect.cpp
        reference/render/ReferenceLayouts.cpp
        reference/ReferenceMath.cpp
        reference/detect/ReferenceProfile.cpp
        reference/detect/ReferenceReduce.cpp
        reference/detect/ReferenceRefine.cpp
        reference/render/ReferenceRender.cpp
        reference/detect/ReferenceSamplers.cpp
        reference/render/ReferenceStamps.cpp
        reference/detect/ReferenceTable.cpp
        reference/render/SceneTest.cpp
        reference/render/Scenes.cpp
        reference/detect/TableTest.cpp)
