# Display channel processing: stages, the line procedure, the observer and the file tool's lines.
halvo_add_test(NAME test_display_chain
    SOURCES
        ${CMAKE_CURRENT_SOURCE_DIR}/test_line_stages.cpp
        ${CMAKE_CURRENT_SOURCE_DIR}/test_channel_processor.cpp
        ${CMAKE_CURRENT_SOURCE_DIR}/test_multipulse.cpp
        ${CMAKE_CURRENT_SOURCE_DIR}/test_chain_vectors.cpp
    LIBS halvo_dsp
    LABELS dsp)
