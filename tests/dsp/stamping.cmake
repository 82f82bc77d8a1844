halvo_add_test(NAME test_stamping
    SOURCES
        test_stamping_steps.cpp
        test_segy_processor.cpp
        test_clock_steering.cpp
    LIBS halvo_stamping
    LABELS dsp)

# The file tool's --stamp, run as a program on generated files.
halvo_add_test(NAME test_stamp_dump
    SOURCES test_stamp_dump.cpp
    LIBS halvo_storage halvo_stamping
    LABELS dsp)
target_compile_definitions(test_stamp_dump PRIVATE HALVO_HSF_BIN="$<TARGET_FILE:halvo-hsf>")
add_dependencies(test_stamp_dump halvo-hsf)
