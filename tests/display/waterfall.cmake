# The waterfall's column rules, palettes and scope computations, headless.
halvo_add_test(NAME test_waterfall
    SOURCES
        ${CMAKE_CURRENT_SOURCE_DIR}/test_waterfall_column.cpp
        ${CMAKE_CURRENT_SOURCE_DIR}/test_palette_scope.cpp
    LIBS halvo_waterfall
    LABELS display)

# `halvo-hsf render` end to end: a generated file drawn to a PNG and read back.
find_package(nlohmann_json CONFIG REQUIRED)
halvo_add_test(NAME test_render_command
    SOURCES ${CMAKE_CURRENT_SOURCE_DIR}/test_render_command.cpp
    LIBS halvo_waterfall halvo_storage PkgConfig::CAIRO nlohmann_json::nlohmann_json
    LABELS display)
target_compile_definitions(test_render_command PRIVATE HALVO_HSF_BIN="$<TARGET_FILE:halvo-hsf>")
add_dependencies(test_render_command halvo-hsf)
