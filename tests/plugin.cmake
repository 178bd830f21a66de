# The filter module, driven through the host library.
brillatrix_test(plugin_tests LIBS filter_host ole32 shell32 bcrypt
    SOURCES plugin/ResourceTest.cpp plugin/ModuleFixture.cpp plugin/Sha256.cpp storage/TemporaryFolder.cpp)
add_dependencies(plugin_tests BrillatrixX64)
