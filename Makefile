# Corvane's commands. `make run` and `make test` do the whole set-up on a fresh Debian bookworm
# machine: they install what is missing (tools/install-deps.sh), configure, build, and then run.

BUILD_DIR   ?= build
BUILD_TYPE  ?= RelWithDebInfo
CMAKE_FLAGS ?=
JOBS        ?= $(shell nproc)

.PHONY: all deps configure build run test test-core bench screenshots format format-check clean

all: build

deps:
	@bash tools/install-deps.sh

configure: deps
	@cmake -S . -B $(BUILD_DIR) -G Ninja -DCMAKE_BUILD_TYPE=$(BUILD_TYPE) $(CMAKE_FLAGS) > /dev/null

build: configure
	@cmake --build $(BUILD_DIR) -j $(JOBS)

run: build
	$(BUILD_DIR)/src/corvane

test: build
	ctest --test-dir $(BUILD_DIR) --output-on-failure -j $(JOBS)

test-core: build
	ctest --test-dir $(BUILD_DIR) --output-on-failure -j $(JOBS) -L core

bench: build
	@bash tools/run-benchmarks.sh $(BUILD_DIR)

screenshots: build
	@bash tools/screenshots.sh $(BUILD_DIR) docs/screenshots

format:
	@git ls-files --cached --others --exclude-standard '*.cpp' '*.h' | xargs clang-format -i

format-check:
	@git ls-files --cached --others --exclude-standard '*.cpp' '*.h' | xargs clang-format --dry-run --Werror

clean:
	rm -rf $(BUILD_DIR)
