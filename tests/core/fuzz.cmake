# Every fuzz target's seed corpus and stored faults, replayed in an ordinary build through the
# target's own entry point. One executable per target (each defines the same entry point).
# halvo_add_fuzz_replay(NAME fuzz_x LIBS ... LABEL area); areas included after core use it too.
function(halvo_add_fuzz_replay)
    cmake_parse_arguments(R "" "NAME;LABEL" "LIBS" ${ARGN})
    halvo_add_test(NAME test_${R_NAME}_replay
        SOURCES ${PROJECT_SOURCE_DIR}/tests/core/FuzzReplay.cpp
            ${PROJECT_SOURCE_DIR}/fuzz/${R_NAME}.cpp
        LIBS ${R_LIBS}
        LABELS ${R_LABEL})
    # fuzz_hsf_reader -> FuzzHsfReaderReplay, the suite name of its tests.
    string(REGEX REPLACE "_(.)" ";\\1" parts "${R_NAME}")
    set(suite "")
    foreach(p IN LISTS parts)
        string(SUBSTRING "${p}" 0 1 head)
        string(SUBSTRING "${p}" 1 -1 tail)
        string(TOUPPER "${head}" head)
        string(APPEND suite "${head}${tail}")
    endforeach()
    target_compile_definitions(test_${R_NAME}_replay PRIVATE HALVO_FUZZ_NAME="${R_NAME}"
        HALVO_FUZZ_SUITE=${suite}Replay)
endfunction()

halvo_add_fuzz_replay(NAME fuzz_normalise LIBS halvo_core LABEL core)
halvo_add_fuzz_replay(NAME fuzz_payloads LIBS halvo_core LABEL core)
