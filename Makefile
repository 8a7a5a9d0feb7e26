# Set-up, build and test entry points. Every target installs missing Debian
# packages first (as root, non-interactively), so a fresh machine needs
# nothing but `make run` or `make test`.

PACKAGES := cmake g++ make pkgconf libgtest-dev libgmock-dev libbenchmark-dev \
            libuchardet-dev libcli11-dev nlohmann-json3-dev zlib1g-dev \
            python3-dev python3-pybind11 python3-pytest python3-setuptools python3-pip \
            python3-dask python3-distributed
FUZZ_PACKAGES := clang libfuzzer-14-dev libclang-rt-14-dev
JOBS ?= $(shell nproc)
BUILD_TYPE ?= RelWithDebInfo
SAMPLE ?= samples/article.html
FUZZ_SECONDS ?= 60
# Longest input the fuzzers make: the starting corpus's pages are cut to 6 KB.
FUZZ_MAX_LEN ?= 8192
FUZZ_TARGETS := beautify_bytes_fuzzer beautified_text_from_string_fuzzer document_tree_fuzzer block_layout_fuzzer html_parser_fuzzer

.PHONY: all deps build run test test-sanitize test-thread fuzz clean

all: build

# Installs only what is missing, so a ready machine never touches apt.
deps:
	@missing=""; for p in $(PACKAGES); do \
	  dpkg-query -W -f='$${Status}' $$p 2>/dev/null | grep -q "install ok installed" || missing="$$missing $$p"; \
	done; \
	if [ -n "$$missing" ]; then \
	  echo "Installing:$$missing"; \
	  if [ "$$(id -u)" -ne 0 ]; then echo "run as root to install:$$missing" >&2; exit 1; fi; \
	  export DEBIAN_FRONTEND=noninteractive; \
	  apt-get update -qq && apt-get install -y -qq --no-install-recommends $$missing; \
	fi

build: deps
	cmake -S . -B build -DCMAKE_BUILD_TYPE=$(BUILD_TYPE) >/dev/null
	cmake --build build -j$(JOBS)

# Prints the main text of the sample page: its article, none of its
# navigation, link lists or footer.
run: build
	@build/tools/zestra extract $(SAMPLE)

test: build
	ctest --test-dir build --output-on-failure -j$(JOBS)

test-sanitize: deps
	cmake -S . -B build-sanitize -DCMAKE_BUILD_TYPE=Debug -DZESTRA_SANITIZE=ON >/dev/null
	cmake --build build-sanitize -j$(JOBS)
	ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1 \
	  ctest --test-dir build-sanitize --output-on-failure -j$(JOBS)

# The concurrency test under ThreadSanitizer: only its program is built,
# since the rest of the suite runs single-threaded.
test-thread: deps
	cmake -S . -B build-thread -DCMAKE_BUILD_TYPE=Debug -DZESTRA_SANITIZE=thread >/dev/null
	cmake --build build-thread -j$(JOBS) --target threads_test
	TSAN_OPTIONS="halt_on_error=1 second_deadlock_stack=1" \
	  ctest --test-dir build-thread --output-on-failure --no-tests=error -R '^ConcurrentExtractionTest\.'

# Builds the libFuzzer targets with clang under the address and
# undefined-behaviour sanitizers and runs each for FUZZ_SECONDS. Inputs the
# fuzzer finds worth keeping go to build-fuzz/corpus/<target> (the starting
# corpus, tests/fuzz/corpus and samples/, is only read); a crashing input
# is written to build-fuzz/findings/ and stops the run with an error.
fuzz: PACKAGES += $(FUZZ_PACKAGES)
fuzz: deps
	CC=clang CXX=clang++ cmake -S . -B build-fuzz -DCMAKE_BUILD_TYPE=RelWithDebInfo \
	  -DZESTRA_SANITIZE=ON -DZESTRA_FUZZ=ON -DZESTRA_BUILD_TESTS=OFF >/dev/null
	cmake --build build-fuzz -j$(JOBS) --target $(FUZZ_TARGETS)
	@mkdir -p build-fuzz/findings
	@for t in $(FUZZ_TARGETS); do \
	  mkdir -p build-fuzz/corpus/$$t; \
	  echo "== $$t: $(FUZZ_SECONDS) s"; \
	  build-fuzz/tests/fuzz/$$t -max_total_time=$(FUZZ_SECONDS) -max_len=$(FUZZ_MAX_LEN) -timeout=60 -rss_limit_mb=4096 \
	    -dict=tests/fuzz/html.dict -artifact_prefix=build-fuzz/findings/$$t- -print_final_stats=1 \
	    build-fuzz/corpus/$$t tests/fuzz/corpus samples || exit 1; \
	done

clean:
	rm -rf build build-sanitize build-thread build-fuzz
