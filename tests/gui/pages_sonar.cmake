# The sonar pages and the QC page over a real System; one case runs against the simulator.
find_package(nlohmann_json CONFIG REQUIRED)
halvo_add_test(NAME test_pages_sonar
    SOURCES test_pages_sonar.cpp
    LIBS halvo_gui halvo_simlib Qt6::Test nlohmann_json::nlohmann_json
    LABELS gui)
