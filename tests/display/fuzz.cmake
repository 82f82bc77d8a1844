halvo_add_fuzz_replay(NAME fuzz_palette LIBS halvo_waterfall LABEL display)
