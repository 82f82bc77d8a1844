halvo_add_test(NAME test_pages_navigation
    SOURCES test_setup_telemetry.cpp test_setup_nav.cpp test_devices_pages.cpp
    LIBS halvo_gui Qt6::Test
    LABELS gui)
