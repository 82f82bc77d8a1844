halvo_add_fuzz_replay(NAME fuzz_profile LIBS halvo_app LABEL app)
