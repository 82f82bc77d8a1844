# Display channel processing: the line procedure and its observer on the data bus. Writes into
# the display data model (halvo_display), which sits below it.
add_library(halvo_dsp STATIC
    ${CMAKE_CURRENT_SOURCE_DIR}/DisplayLineOutput.cpp
    ${CMAKE_CURRENT_SOURCE_DIR}/HalvoDisplayChannelProcessor.cpp
    ${CMAKE_CURRENT_SOURCE_DIR}/HalvoDisplaysDataProcessor.cpp
    ${CMAKE_CURRENT_SOURCE_DIR}/LineStages.cpp
    ${CMAKE_CURRENT_SOURCE_DIR}/MultiPulseEqualiser.cpp
    ${CMAKE_CURRENT_SOURCE_DIR}/SummedChannelAccumulator.cpp
)
target_include_directories(halvo_dsp PUBLIC ${PROJECT_SOURCE_DIR}/src)
target_link_libraries(halvo_dsp PUBLIC halvo_display halvo_app halvo_core PRIVATE halvo_warnings)
# The per-sample stages. sqrt never sets errno here (its argument is a sum of squares), and -O3
# lets the scale loop vectorise; neither changes a result (no reassociation of float sums).
set_source_files_properties(${CMAKE_CURRENT_SOURCE_DIR}/LineStages.cpp
    PROPERTIES COMPILE_OPTIONS "-fno-math-errno;-O3")
