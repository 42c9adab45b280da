# Short names for what is done often. The build itself is CMake's: see CMakePresets.json.

# ctest options for `make check`, for example: make check CTEST_ARGS='-R sysfile'
CTEST_ARGS =

SOURCES = find $(wildcard src include tests bench) -name '*.cpp' -o -name '*.c' -o -name '*.h'

.PHONY: demo check check-windows bench format layout clean

demo:
	scripts/demo

check:
	scripts/check $(CTEST_ARGS)

# Compiles for Windows and runs those tests under Wine.
check-windows:
	scripts/check-windows $(CTEST_ARGS)

bench:
	scripts/install-deps build test
	cmake --preset release
	cmake --build build/release --target bench

format:
	$(SOURCES) | xargs -r clang-format -i

# The same as a question: fails where `make format` would change something.
layout:
	$(SOURCES) | xargs -r clang-format --dry-run -Werror

# What was fetched (build/deps) and the compiler cache stay: a clean build needs neither network nor patience.
clean:
	if [ -d build ]; then find build -mindepth 1 -maxdepth 1 ! -name deps ! -name ccache -exec rm -rf {} +; fi
