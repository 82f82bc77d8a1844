# The network, navigation and devices pages.
target_sources(halvo_gui PRIVATE
    ${CMAKE_CURRENT_LIST_DIR}/DeviceReadings.cpp
    ${CMAKE_CURRENT_LIST_DIR}/CfgDevices.cpp
    ${CMAKE_CURRENT_LIST_DIR}/SetupDevices.cpp
    ${CMAKE_CURRENT_LIST_DIR}/SetupTelemetry.cpp
    ${CMAKE_CURRENT_LIST_DIR}/SetupNav.cpp
    ${CMAKE_CURRENT_LIST_DIR}/NavigationPages.cpp
)
target_link_libraries(halvo_gui PUBLIC halvo_system)
