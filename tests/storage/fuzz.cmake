halvo_add_fuzz_replay(NAME fuzz_hsf_reader LIBS halvo_storage LABEL storage)
