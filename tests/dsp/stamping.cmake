halvo_add_test(NAME test_stamping
    SOURCES
        test_stamping_steps.cpp
        test_segy_processor.cpp
        test_clock_steering.cpp
        test_navigation_text.cpp
    LIBS halvo_stamping
    LABELS dsp)
