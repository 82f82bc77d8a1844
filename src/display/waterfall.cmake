# The waterfall's column rules, palettes and the scope's computations: everything a waterfall or
# scope view needs besides its pixels and its mouse, tested without a window.
add_library(halvo_waterfall STATIC
    ${CMAKE_CURRENT_SOURCE_DIR}/Palette.cpp
    ${CMAKE_CURRENT_SOURCE_DIR}/ScopeDrag.cpp
    ${CMAKE_CURRENT_SOURCE_DIR}/ScopeTrace.cpp
    ${CMAKE_CURRENT_SOURCE_DIR}/WaterfallAxis.cpp
    ${CMAKE_CURRENT_SOURCE_DIR}/WaterfallColumn.cpp
    ${CMAKE_CURRENT_SOURCE_DIR}/WaterfallImage.cpp
    ${CMAKE_CURRENT_SOURCE_DIR}/WaterfallPlot.cpp
    ${CMAKE_CURRENT_SOURCE_DIR}/WaterfallZoomDrag.cpp
)
target_include_directories(halvo_waterfall PUBLIC ${PROJECT_SOURCE_DIR}/src)
target_link_libraries(halvo_waterfall PUBLIC halvo_display PRIVATE halvo_warnings)
