# The update notice against a small server on this machine. update_module is the notice alone in a module, so that it
# can be unloaded.
set(update_sources ../web/UpdateNotice.cpp ../web/UpdateRecord.cpp ../web/UpdateRequest.cpp diag/TestVersion.rc)
add_library(update_module MODULE update/UpdateModule.cpp ${update_sources})
target_link_libraries(update_module PRIVATE brillatrix_options storage diag)
set_target_properties(update_module PROPERTIES PREFIX "")
brillatrix_test(update_tests LIBS storage diag ws2_32
    SOURCES update/LoopbackServer.cpp update/UpdateNoticeTest.cpp update/UpdateUnloadTest.cpp storage/TemporaryFolder.cpp
            ${CMAKE_SOURCE_DIR}/host/module/ModuleImports.cpp
            ${update_sources})
add_dependencies(update_tests update_module)
