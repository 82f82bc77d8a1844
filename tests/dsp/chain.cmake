# Display channel processing: stages, the line procedure, the observer and the file tool's lines.
halvo_add_test(NAME test_display_chain
    SOURCES
        ${CMAKE_CURRENT_SOURCE_DIR}/test_line_stages.cpp
        ${CMAKE_CURRENT_SOURCE_DIR}/test_channel_processor.cpp
        ${CMAKE_CURRENT_SOURCE_DIR}/test_chain_vectors.cpp
    LIBS halvo_dsp
    LABELS dsp)

# The file tool's lines subcommand, run as a program.
find_package(nlohmann_json CONFIG REQUIRED)
halvo_add_test(NAME test_lines_command
    SOURCES ${CMAKE_CURRENT_SOURCE_DIR}/test_lines_command.cpp
    LIBS halvo_dsp halvo_storage nlohmann_json::nlohmann_json
    LABELS dsp)
target_compile_definitions(test_lines_command PRIVATE HALVO_HSF_BIN="$<TARGET_FILE:halvo-hsf>")
add_dependencies(test_lines_command halvo-hsf)
