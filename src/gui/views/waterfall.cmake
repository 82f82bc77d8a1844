# The display windows: waterfall documents, frames, waterfall and scope views, and the display
# pages. Their computations live in halvo_waterfall; halvo_system gives the application object
# the windows open over.
target_sources(halvo_gui PRIVATE
    ${CMAKE_CURRENT_LIST_DIR}/CChildFrameWaterfall.cpp
    ${CMAKE_CURRENT_LIST_DIR}/CPlotWnd.cpp
    ${CMAKE_CURRENT_LIST_DIR}/PlotView.cpp
    ${CMAKE_CURRENT_LIST_DIR}/XYPlotView.cpp
    ${CMAKE_CURRENT_LIST_DIR}/../pages/CfgGraph.cpp
    ${CMAKE_CURRENT_LIST_DIR}/../dialogs/PlotOptions.cpp
    ${CMAKE_CURRENT_LIST_DIR}/CSplitterWndSonar.cpp
    ${CMAKE_CURRENT_LIST_DIR}/CWaterfallDoc.cpp
    ${CMAKE_CURRENT_LIST_DIR}/CWaterfallView.cpp
    ${CMAKE_CURRENT_LIST_DIR}/CfgDisplay.cpp
    ${CMAKE_CURRENT_LIST_DIR}/DisplayRecordPage.cpp
    ${CMAKE_CURRENT_LIST_DIR}/DisplayWindows.cpp
    ${CMAKE_CURRENT_LIST_DIR}/ScopeView.cpp
    ${CMAKE_CURRENT_LIST_DIR}/SetupDisplay.cpp
    ${CMAKE_CURRENT_LIST_DIR}/WaterfallDocSet.cpp
    ${CMAKE_CURRENT_LIST_DIR}/WaterfallRing.cpp
)
target_link_libraries(halvo_gui PUBLIC halvo_waterfall halvo_system)
