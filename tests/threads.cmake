# The preview's task and the table's, from their sources, where the standard library stands in for the system: for
# ThreadSanitizer above all (preset native-tsan).
brillatrix_test(preview_threads LIBS engine render test_support recording_diag
    SOURCES threads/PreviewThreads.cpp ../ui/native/windows.cpp ${preview_portable}
    ../engine/InitializationTask.cpp ../engine/SystemThreads.cpp ../ui/pixels/DraftPictures.cpp ../ui/pixels/TypePictures.cpp
    ../ui/preview/PreviewDraft.cpp ../ui/preview/PreviewImages.cpp ../ui/preview/PreviewInvariants.cpp
    ../ui/preview/PreviewPreparation.cpp ../ui/preview/PreviewProxies.cpp ../ui/preview/PreviewRequest.cpp
    ../ui/preview/PreviewStars.cpp ../ui/preview/PreviewTiles.cpp ../ui/preview/ProxyUpdateLoop.cpp
    ../ui/preview/ProxyUpdateState.cpp ../ui/preview/ProxyUpdateTask.cpp ../ui/preview/Regions.cpp)
target_include_directories(preview_threads BEFORE PRIVATE ../ui/native)
