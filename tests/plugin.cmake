# The filter module, driven through the host library. The engine and the renderer are linked for a second opinion on
# its pictures; some open the dialog. Memory refused at every allocation takes 20 minutes on a busy machine.
brillatrix_test(plugin_tests TIMEOUT 1800 DESKTOP_CASES "*Memory*dialog*:Long.Many*"
    LIBS system_objects filter_host engine render storage diag ole32 psapi shell32
    SOURCES plugin/FailureTest.cpp plugin/ImageTest.cpp plugin/LongTest.cpp plugin/MemoryTest.cpp plugin/ModuleFixture.cpp
            plugin/NightDocument.cpp plugin/OddHostTest.cpp
            plugin/ParameterAccessorTest.cpp plugin/PersistentBlockTest.cpp plugin/ResourceTest.cpp
            plugin/ScriptTest.cpp plugin/SelectorTest.cpp storage/TemporaryFolder.cpp
            support/NightScene.cpp ../plugin/parameters/ParameterAccessor.cpp
            ../plugin/record/PluginState.cpp)
add_dependencies(plugin_tests BrillatrixX64)
