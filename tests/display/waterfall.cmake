# The waterfall's column rules, palettes and scope computations, headless.
halvo_add_test(NAME test_waterfall
    SOURCES
        ${CMAKE_CURRENT_SOURCE_DIR}/test_waterfall_column.cpp
        ${CMAKE_CURRENT_SOURCE_DIR}/test_palette_scope.cpp
    LIBS halvo_waterfall
    LABELS display)
