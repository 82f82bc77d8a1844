# The waterfall windows: views, frames and display pages over real records and caches, and a
# played file through a whole System compared with `halvo-hsf render`.
halvo_add_test(NAME test_waterfall_windows
    SOURCES
        ${CMAKE_CURRENT_LIST_DIR}/test_waterfall_views.cpp
        ${CMAKE_CURRENT_LIST_DIR}/test_waterfall_playback.cpp
    LIBS halvo_gui halvo_simlib halvo_storage Qt6::Test
    LABELS gui)
target_compile_definitions(test_waterfall_windows PRIVATE HALVO_HSF_BIN="$<TARGET_FILE:halvo-hsf>")
add_dependencies(test_waterfall_windows halvo-hsf)
