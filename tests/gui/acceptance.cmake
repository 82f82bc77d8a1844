# The windowed program against the simulator on loopback: live survey, recording, playback and
# a display page's gain, with the demo's settings.
halvo_add_test(NAME test_acceptance
    SOURCES ${CMAKE_CURRENT_LIST_DIR}/test_acceptance.cpp
    LIBS halvo_gui halvo_simlib halvo_storage Qt6::Test
    LABELS gui)
