halvo_add_fuzz_replay(NAME fuzz_sentence LIBS halvo_nav LABEL nav)
