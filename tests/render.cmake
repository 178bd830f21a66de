brillatrix_test(render_tests LIBS render engine recording_diag
    SOURCES
    render/DriverTests.cpp
    render/NumberTests.cpp
    render/PathTests.cpp)
