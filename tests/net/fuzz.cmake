halvo_add_fuzz_replay(NAME fuzz_framing LIBS halvo_net LABEL net)
