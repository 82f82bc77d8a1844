# Serial navigation input, on pseudo-terminals only: never a real device.
halvo_add_test(NAME test_serial_input
    SOURCES
        ${CMAKE_CURRENT_SOURCE_DIR}/test_serial_input.cpp
        ${CMAKE_CURRENT_SOURCE_DIR}/test_navigation_input.cpp
    LIBS halvo_serial
    LABELS nav)

# End to end: the simulator's NMEA pty feeds a port thread and the stamping observer puts the
# position into a trace.
halvo_add_test(NAME test_serial_stamping
    SOURCES ${CMAKE_CURRENT_SOURCE_DIR}/test_serial_stamping.cpp
    LIBS halvo_serial halvo_stamping halvo_simlib
    LABELS nav)
