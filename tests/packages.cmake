# What is shipped: scripts that look at the built files and at the packages.
add_test(NAME windows.versions
    COMMAND sh ${CMAKE_CURRENT_SOURCE_DIR}/packages/versions.sh ${CMAKE_SOURCE_DIR} ${CMAKE_RUNTIME_OUTPUT_DIRECTORY})
add_test(NAME windows.packages
    COMMAND bash ${CMAKE_CURRENT_SOURCE_DIR}/packages/install.sh ${CMAKE_SOURCE_DIR} ${CMAKE_RUNTIME_OUTPUT_DIRECTORY})
set_tests_properties(windows.packages PROPERTIES TIMEOUT 600)
add_test(NAME windows.messages
    COMMAND python3 ${CMAKE_SOURCE_DIR}/docs/list-messages.py --check ${CMAKE_SOURCE_DIR}/docs/guide/90-messages.md)
