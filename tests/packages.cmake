# What is shipped: scripts that look at the built files and at the packages.
add_test(NAME windows.versions
    COMMAND sh ${CMAKE_CURRENT_SOURCE_DIR}/packages/versions.sh ${CMAKE_SOURCE_DIR} ${CMAKE_RUNTIME_OUTPUT_DIRECTORY})
