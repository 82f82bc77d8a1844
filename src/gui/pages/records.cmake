# The settings pages of storage, logs, alerts and status.
target_sources(halvo_gui PRIVATE
    ${CMAKE_CURRENT_LIST_DIR}/CfgStorage.cpp
    ${CMAKE_CURRENT_LIST_DIR}/SetupLogs.cpp
    ${CMAKE_CURRENT_LIST_DIR}/SetupAlert.cpp
    ${CMAKE_CURRENT_LIST_DIR}/SetupStatus.cpp
    ${CMAKE_CURRENT_LIST_DIR}/RecordPages.cpp
)
target_link_libraries(halvo_gui PUBLIC halvo_system)
