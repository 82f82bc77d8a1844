# The sonar pages: one per sonar (or the side-scan unit's), the sonar's recorder and sensors,
# and the QC page.
target_sources(halvo_gui PRIVATE
    ${CMAKE_CURRENT_LIST_DIR}/SonarChannelGrid.cpp
    ${CMAKE_CURRENT_LIST_DIR}/CfgSonar.cpp
    ${CMAKE_CURRENT_LIST_DIR}/CfgSonarR90.cpp
    ${CMAKE_CURRENT_LIST_DIR}/CfgSonarRC900.cpp
    ${CMAKE_CURRENT_LIST_DIR}/SetupQC.cpp
    ${CMAKE_CURRENT_LIST_DIR}/SonarPages.cpp
)
target_link_libraries(halvo_gui PUBLIC halvo_system)
