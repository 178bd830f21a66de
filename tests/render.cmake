brillatrix_test(render_tests LIBS render plain_render engine recording_diag
    SOURCES
    render/ArmTests.cpp
    render/BlendTests.cpp
    render/DriverTests.cpp
    render/FlareTests.cpp
    render/LayoutTests.cpp
    render/TableTests.cpp)
