# Rendered pictures against their sources.
add_test(NAME PictureFiles.AreRenderedFromTheirSources
    COMMAND ${CMAKE_COMMAND} -DRESOURCES=${CMAKE_SOURCE_DIR}/resources -P ${CMAKE_CURRENT_LIST_DIR}/pictures/CheckManifest.cmake)
