# Corvane's commands. `make run` and `make test` do the whole set-up on a fresh Debian bookworm
# machine: they install what is missing (tools/install-deps.sh), configure, build, and then run.

BUILD_DIR   ?= build
BUILD_TYPE  ?= RelWithDebInfo
CMAKE_FLAGS ?=
JOBS        ?= $(shell nproc)
FUZZ_DIR    ?= build-fuzz
FUZZ_SECONDS ?= 300

.PHONY: all deps test-deps configure build run test test-sanitize test-core fuzz fuzz-build package demo bench screenshots translations format \
        format-check lint mutation-check clean

all: build

# What building and running need; with the tests, also what only the tests, the benchmarks
# and the demo use.
deps:
	@bash tools/install-deps.sh

test-deps:
	@bash tools/install-deps.sh --tests

# TESTS=OFF builds the programs only (no fixtures, tests or benchmarks, and none of what they need).
TESTS ?= ON
configure: $(if $(filter ON,$(TESTS)),test-deps,deps)
	@cmake -S . -B $(BUILD_DIR) -G Ninja -DCMAKE_BUILD_TYPE=$(BUILD_TYPE) -DCORVANE_TESTS=$(TESTS) \
	    $(CMAKE_FLAGS) > /dev/null

build: configure
	@cmake --build $(BUILD_DIR) -j $(JOBS)

# Without a display (a server, a container) Corvane cannot show itself: the demo shows it at
# work in a virtual session instead.
run:
	@if [ -z "$$DISPLAY$$WAYLAND_DISPLAY" ]; then \
	    echo "make run: there is no display here (DISPLAY and WAYLAND_DISPLAY are not set), so this runs make demo: Corvane at work in a virtual session, with screenshots in demo-output/"; \
	    $(MAKE) --no-print-directory demo; \
	else \
	    $(MAKE) --no-print-directory build TESTS=OFF && $(BUILD_DIR)/bin/corvane; \
	fi

test: build fuzz-build
	ctest --test-dir $(BUILD_DIR) --output-on-failure -j $(JOBS)
	ctest --test-dir $(FUZZ_DIR) --output-on-failure -j $(JOBS) -L fuzz

# The libFuzzer targets (tests/fuzz), built with clang and both sanitizers in a folder of their
# own. `make test` runs each for 20 seconds on its corpus; `make fuzz` for FUZZ_SECONDS each.
fuzz-build: test-deps
	@cmake -S . -B $(FUZZ_DIR) -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCORVANE_FUZZ=ON \
	    -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ > /dev/null
	@cmake --build $(FUZZ_DIR) --target corvane_fuzzers -j $(JOBS)

fuzz: fuzz-build
	CORVANE_FUZZ_SECONDS=$(FUZZ_SECONDS) ctest --test-dir $(FUZZ_DIR) --output-on-failure -j $(JOBS) -L fuzz

# The whole suite built with AddressSanitizer and UndefinedBehaviorSanitizer in a folder of its
# own; any report fails the test that made it. Leak reports skip Qt's and FFmpeg's own caches
# (tools/lsan.supp); Qt's GLX integration is off so that Mesa's driver, unloaded at exit, leaves
# no leak without a name. The package test is left out: its chroot has no sanitizer runtime.
SANITIZE_DIR ?= build-sanitize
test-sanitize: test-deps
	@cmake -S . -B $(SANITIZE_DIR) -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCORVANE_SANITIZE=ON \
	    $(CMAKE_FLAGS) > /dev/null
	@cmake --build $(SANITIZE_DIR) -j $(JOBS)
	ASAN_OPTIONS=detect_leaks=1 LSAN_OPTIONS=suppressions=$(CURDIR)/tools/lsan.supp \
	    UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 QT_XCB_GL_INTEGRATION=none \
	    ctest --test-dir $(SANITIZE_DIR) --output-on-failure -j $(JOBS) -LE package

test-core: build
	ctest --test-dir $(BUILD_DIR) --output-on-failure -j $(JOBS) -L core

# The main job, on a machine without a desktop: screenshots, steps and log in demo-output/.
demo: build
	@bash tools/demo.sh $(BUILD_DIR) demo-output

# The Debian package, in the build folder (corvane_VERSION_ARCH.deb).
package: build
	@cd $(BUILD_DIR) && cpack -G DEB

bench: build
	@bash tools/run-benchmarks.sh $(BUILD_DIR)

screenshots: build
	@bash tools/screenshots.sh $(BUILD_DIR) docs/screenshots

# Brings the German and French catalogs (and the English plural forms) up to date with the
# sources; translate what it marks unfinished (Qt Linguist, or any editor), then commit the .ts
# files.
translations: test-deps
	/usr/lib/qt6/bin/lupdate -locations none -no-obsolete -extensions cpp,h,qml src \
	    -ts data/translations/corvane_de.ts data/translations/corvane_fr.ts
	/usr/lib/qt6/bin/lupdate -locations none -no-obsolete -pluralonly -extensions cpp,h,qml src \
	    -ts data/translations/corvane_en.ts

format:
	@git ls-files --cached --others --exclude-standard '*.cpp' '*.h' | xargs clang-format -i

format-check:
	@git ls-files --cached --others --exclude-standard '*.cpp' '*.h' | xargs clang-format --dry-run --Werror

# Deliberate faults (tests/mutations/faults.txt), one at a time on a copy of the tree in
# build-mutation/: which of them the tests covering the changed code catch, and the size of the
# tests beside the product code.
mutation-check: test-deps
	@python3 tools/mutation-check.py

# Tracked files never point at documents the repository does not hold (tools/lint.sh).
lint:
	@bash tools/lint.sh

clean:
	rm -rf $(BUILD_DIR) $(FUZZ_DIR) $(SANITIZE_DIR) build-mutation
