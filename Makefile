# Gorvan — top-level commands. Everything builds out of tree with CMake + Ninja.
#   make deps    install the Debian packages that are missing (root or sudo)
#   make         configure and build in build/
#   make run     deps + build + start the desktop program gorvan on the default catalog
#   make cli     deps + build + run gorvan-cli with ARGS
#   make test    deps + build + every test through ctest
#   make bench   build and run the benchmarks (release build in build-bench/)
#   WERROR=1     with any target: warnings are errors (as CI builds)
#   make fuzz    build the libFuzzer targets with clang and run each for FUZZ_SECONDS
#   make package deps + build + a Debian package (build/gorvan_<version>_<arch>.deb)

BUILD_DIR     ?= build
BUILD_TYPE    ?= RelWithDebInfo
JOBS          ?= $(shell nproc)
FUZZ_SECONDS  ?= 60
ARGS          ?= --help

PACKAGES := cmake ninja-build pkg-config g++ clang libclang-rt-14-dev \
            libgtest-dev libgmock-dev libbenchmark-dev \
            libcli11-dev nlohmann-json3-dev libpcre2-dev libarchive-dev libblkid-dev \
            e2fsprogs unzip zip libarchive-tools \
            qt6-base-dev qt6-base-dev-tools qt6-svg-dev qt6-qpa-plugins libgl-dev \
            libcurl4-openssl-dev libssl-dev libxlsxwriter-dev libudev-dev \
            fonts-dejavu-core adwaita-icon-theme desktop-file-utils shared-mime-info \
            xvfb xauth python3-openpyxl libdiscid-dev dpkg-dev file locales

SUDO := $(shell [ "$$(id -u)" = 0 ] || echo sudo)

.PHONY: all deps configure build run cli test bench bench-build fuzz sanitize package clean

all: build

deps:
	@missing=$$(for p in $(PACKAGES); do \
	    dpkg-query -W -f='$${Status}\n' $$p 2>/dev/null | grep -q 'install ok installed' || echo $$p; \
	  done); \
	if [ -n "$$missing" ]; then \
	  echo "Installing:" $$missing; \
	  $(SUDO) apt-get update -qq && \
	  DEBIAN_FRONTEND=noninteractive $(SUDO) apt-get install -y -qq --no-install-recommends $$missing; \
	fi

# ccache when the machine has it (developer machines); CI builds without.
LAUNCHER := $(if $(shell command -v ccache),-DCMAKE_C_COMPILER_LAUNCHER=ccache -DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
# WERROR=1 turns warnings into errors (CI).
OPTIONS  := -DGORVAN_WERROR=$(if $(WERROR),ON,OFF) $(LAUNCHER)

# The build folder is configured again whenever the build type or the options
# change: the stamp's name holds them.
STAMP := $(BUILD_DIR)/.configured-$(BUILD_TYPE)$(if $(WERROR),-werror)

$(STAMP):
	@rm -f $(BUILD_DIR)/.configured-*
	cmake -S . -B $(BUILD_DIR) -G Ninja -DCMAKE_BUILD_TYPE=$(BUILD_TYPE) $(OPTIONS)
	@touch $@

configure: $(STAMP)

build: configure
	cmake --build $(BUILD_DIR) -j $(JOBS)

run: deps build
	./$(BUILD_DIR)/src/ui/gorvan

cli: deps build
	./$(BUILD_DIR)/src/cli/gorvan-cli $(ARGS)

test: deps build
	cd $(BUILD_DIR) && ctest --output-on-failure -j $(JOBS)

package: deps build
	cmake --build $(BUILD_DIR) --target package

sanitize: deps
	cmake -S . -B build-asan -G Ninja -DCMAKE_BUILD_TYPE=Debug -DGORVAN_SANITIZE=ON $(OPTIONS)
	cmake --build build-asan -j $(JOBS)
	cd build-asan && ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1 \
	  LSAN_OPTIONS=suppressions=$(CURDIR)/tests/lsan.supp \
	  ctest --output-on-failure -j $(JOBS)

bench-build: deps
	cmake -S . -B build-bench -G Ninja -DCMAKE_BUILD_TYPE=Release -DGORVAN_TESTS=OFF -DGORVAN_BENCH=ON \
	  $(OPTIONS)
	cmake --build build-bench -j $(JOBS)

bench: bench-build
	@for b in build-bench/bench/bench_*; do echo "== $$b"; $$b || exit 1; done

fuzz: deps
	CC=clang CXX=clang++ cmake -S . -B build-fuzz -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
	  -DGORVAN_TESTS=OFF -DGORVAN_FUZZ=ON $(OPTIONS)
	cmake --build build-fuzz -j $(JOBS) --target fuzzers
	@for f in build-fuzz/fuzz/fuzz_*; do \
	  echo "== $$f for $(FUZZ_SECONDS) s"; \
	  mkdir -p build-fuzz/corpus/$$(basename $$f); \
	  $$f -max_total_time=$(FUZZ_SECONDS) -rss_limit_mb=2048 -print_final_stats=1 \
	    build-fuzz/corpus/$$(basename $$f) || exit 1; \
	done

clean:
	rm -rf build build-asan build-bench build-fuzz
