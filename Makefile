# Thin wrapper over the CMake presets. `make test` and `make demo` do all the set-up themselves.
.PHONY: all bootstrap build test bench demo asan tsan fuzz format format-check clean

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

tsan: bootstrap
	@cmake --preset tsan >/dev/null
	@cmake --build --preset tsan
	@ctest --preset tsan

fuzz: bootstrap
	@cmake --preset fuzz >/dev/null
	@cmake --build --preset fuzz
	@scripts/run-fuzz build/fuzz $${FUZZ_SECONDS:-60}

format:
	@git ls-files '*.cpp' '*.h' | xargs -r clang-format -i

format-check:
	@git ls-files '*.cpp' '*.h' | xargs -r clang-format --dry-run --Werror

clean:
	@rm -rf build
