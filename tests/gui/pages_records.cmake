# The settings pages of storage, logs, alerts and status.
halvo_add_test(NAME test_pages_records
    SOURCES ${CMAKE_CURRENT_LIST_DIR}/test_pages_records.cpp
            ${CMAKE_CURRENT_LIST_DIR}/test_pages_status.cpp
    LIBS halvo_gui Qt6::Test
    LABELS gui)
