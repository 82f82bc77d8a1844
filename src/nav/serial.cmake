# Serial navigation input: the port readers and their threads, over the platform's serial line.
add_library(halvo_serial
    ${CMAKE_CURRENT_SOURCE_DIR}/DiagnosticPulse.cpp
    ${CMAKE_CURRENT_SOURCE_DIR}/NavigationInput.cpp
    ${CMAKE_CURRENT_SOURCE_DIR}/SerialInput.cpp
)
target_include_directories(halvo_serial PUBLIC ${PROJECT_SOURCE_DIR}/src)
target_link_libraries(halvo_serial PUBLIC halvo_nav halvo_platform halvo_core
    PRIVATE halvo_warnings Threads::Threads)
