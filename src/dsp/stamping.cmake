# Trace stamping: the observer that completes trace headers with navigation and sensor values,
# and the clock steering by navigation time.
add_library(halvo_stamping STATIC
    ${CMAKE_CURRENT_SOURCE_DIR}/ClockSteering.cpp
    ${CMAKE_CURRENT_SOURCE_DIR}/SeawaterDepth.cpp
    ${CMAKE_CURRENT_SOURCE_DIR}/SegyDataProcessor.cpp
    ${CMAKE_CURRENT_SOURCE_DIR}/SonarChannelSettings.cpp
    ${CMAKE_CURRENT_SOURCE_DIR}/TraceStampSteps.cpp
)
target_include_directories(halvo_stamping PUBLIC ${PROJECT_SOURCE_DIR}/src)
target_link_libraries(halvo_stamping PUBLIC halvo_nav halvo_app halvo_core PRIVATE halvo_warnings)
