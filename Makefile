# Thin wrapper over the CMake presets. `make test` and `make demo` do all the set-up themselves.
.PHONY: all bootstrap build test bench demo asan tsan fuzz soak format format-check clean

all: build

bootstrap:
	@scripts/bootstrap

build: bootstrap
	@cmake --preset default >/dev/null
	@cmake --build --preset default

test: build
	@ctest --preset default

bench: bootstrap
	@cmake --preset release -DHALVO_BUILD_BENCH=ON >/dev/null
	@cmake --build --preset release
	@scripts/run-bench build/release

demo: bootstrap
	@scripts/demo

asan: bootstrap
	@cmake --preset asan >/dev/null
	@cmake --build --preset asan
	@ctest --preset asan

# The threaded parts under ThreadSanitizer: bus and queue, network, recording and playback, status.
# The test preset selects the same tests by label (tsan, net, storage, status).
TSAN_TARGETS = test_core test_app_clock_threads test_net test_fuzz_framing_replay test_storage \
	test_halvo_hsf test_recording_roundtrip test_fuzz_hsf_reader_replay test_status halvo-hsf

tsan: bootstrap
	@cmake --preset tsan >/dev/null
	@cmake --build --preset tsan --target $(TSAN_TARGETS)
	@ctest --preset tsan

fuzz: bootstrap
	@cmake --preset fuzz >/dev/null
	@cmake --build --preset fuzz --target fuzzers
	@scripts/run-fuzz build/fuzz $${FUZZ_SECONDS:-60}

# A long run against the simulator with faults; not part of `make test` (docs/reliability.md).
soak: bootstrap
	@cmake --preset release >/dev/null
	@cmake --build --preset release --target halvo halvo-sim halvo-hsf
	@scripts/soak --build build/release $${SOAK_ARGS:-}

format:
	@git ls-files '*.cpp' '*.h' | xargs -r clang-format -i

format-check:
	@git ls-files '*.cpp' '*.h' | xargs -r clang-format --dry-run --Werror

clean:
	@rm -rf build
