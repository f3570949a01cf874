# The two set-up commands are `make run` and `make check`; both install
# what is missing first. `make bench` runs the Release benchmarks.

BUILD   := build
RELEASE := build-release
CMAKE_FLAGS := -G Ninja -DCMAKE_BUILD_TYPE=Debug -DTV_SANITIZE=ON
JOBS    ?= $(shell nproc)

.PHONY: sync-soak all setup configure release-configure build check run bench fuzz clean crash screenshots \
        install deb deb-check

all: build

setup:
	@bash scripts/setup.sh

$(BUILD)/build.ninja: CMakeLists.txt | setup
	@cmake -S . -B $(BUILD) $(CMAKE_FLAGS) >/dev/null

configure: setup $(BUILD)/build.ninja

build: configure
	@cmake --build $(BUILD) -j $(JOBS)

# Every test of the sanitizer build, then the Debian package of the
# optimised one (deb-check, below: some 40 s on a warm ccache).
check: build
	@cd $(BUILD) && ASAN_OPTIONS=detect_leaks=1:abort_on_error=0 QT_QPA_PLATFORM=offscreen \
	  ctest --output-on-failure -j $(JOBS) --timeout 300
	@$(MAKE) --no-print-directory deb-check

# What users run is the optimised build, without sanitizers; it shares
# its folder with the benchmarks.
RELEASE_FLAGS := -G Ninja -DCMAKE_BUILD_TYPE=Release -DTV_BENCHMARKS=ON -DTV_TESTS=OFF

release-configure: setup
	@cmake -S . -B $(RELEASE) $(RELEASE_FLAGS) >/dev/null

run: release-configure
	@cmake --build $(RELEASE) -j $(JOBS) --target tarvello-maths tvdb
	@$(RELEASE)/bin/tarvello-maths

# The optimised build installed as a desktop program: the two programs,
# the launcher entry, icons, file type, AppStream record and manual pages.
# `make install PREFIX=/usr DESTDIR=/tmp/stage` for a staged tree.
PREFIX  ?= /usr/local
INSTALL_TARGETS := tarvello-maths tvdb tarvello-maths-desktop

install: release-configure
	@cmake --build $(RELEASE) -j $(JOBS) --target $(INSTALL_TARGETS)
	@DESTDIR="$(DESTDIR)" cmake --install $(RELEASE) --prefix "$(PREFIX)"

# The Debian package of the same install, under /usr, in $(RELEASE)/:
# `apt install ./$(RELEASE)/tarvello-maths_*.deb`. deb-check runs lintian
# on it, compares its files with the install's and, as root, installs it
# with apt, starts it and removes it again.
deb: release-configure
	@cmake --build $(RELEASE) -j $(JOBS) --target $(INSTALL_TARGETS)
	@cd $(RELEASE) && cpack -G DEB >/dev/null
	@ls $(RELEASE)/tarvello-maths_*.deb

deb-check: deb
	@bash scripts/deb-check.sh $(RELEASE)

bench: release-configure
	@cmake --build $(RELEASE) -j $(JOBS) --target benchmarks
	@for b in $(RELEASE)/bin/bench_*; do echo "== $$b"; $$b; done

# The program on a prepared file under Xvfb, its windows grabbed to
# $(BUILD)/screenshots: welcome, session, run, finished run, list and
# editor, preferences, the cloud button in two states and the cloud page.
screenshots: configure
	@cmake --build $(BUILD) -j $(JOBS) --target tarvello-maths-screenshots
	@rm -rf $(BUILD)/screenshots && mkdir -p $(BUILD)/screenshots
	@ASAN_OPTIONS=detect_leaks=0 xvfb-run -a -s "-screen 0 1280x900x24" \
	  $(BUILD)/bin/tarvello-maths-screenshots $(BUILD)/screenshots

# The libFuzzer targets of the serial form, the date language, the
# repeat rules' stored text, the spec language and the query language,
# built with clang in a configuration of their own. Each runs on past a
# crash so that one fault doesn't hide the next, then the target fails
# listing every crash input found (in build-fuzz/artifacts); copy one, once
# fixed, into its fuzzer's corpus folder to keep it as a test of make
# check. New inputs gather in build-fuzz/corpus*.
FUZZ := build-fuzz
FUZZ_SECONDS ?= 60
FUZZ_FLAGS := -fsanitize=fuzzer-no-link,address,undefined -fno-sanitize-recover=undefined -fno-omit-frame-pointer

fuzz: setup
	@cmake -S . -B $(FUZZ) -G Ninja -DCMAKE_CXX_COMPILER=clang++ -DCMAKE_BUILD_TYPE=RelWithDebInfo \
	  -DTV_TESTS=OFF -DTV_FUZZ=ON "-DCMAKE_CXX_FLAGS=$(FUZZ_FLAGS)" >/dev/null
	@cmake --build $(FUZZ) --target tvserial_fuzzer tvdate_fuzzer tvdaterepeat_fuzzer tvspec_fuzzer tvquery_fuzzer -j $(JOBS)
	@rm -rf $(FUZZ)/artifacts && mkdir -p $(FUZZ)/corpus $(FUZZ)/artifacts
	@$(FUZZ)/bin/tvserial_fuzzer -fork=1 -ignore_crashes=1 -max_total_time=$(FUZZ_SECONDS) -max_len=4096 \
	  -dict=LibObject/object/fuzz/serial.dict -artifact_prefix=$(FUZZ)/artifacts/ \
	  $(FUZZ)/corpus LibObject/object/fuzz/corpus 2>$(FUZZ)/fuzz.log || (tail -20 $(FUZZ)/fuzz.log; exit 1)
	@tail -1 $(FUZZ)/fuzz.log
	@mkdir -p $(FUZZ)/corpus-date
	@$(FUZZ)/bin/tvdate_fuzzer -fork=1 -ignore_crashes=1 -max_total_time=$(FUZZ_SECONDS) -max_len=256 \
	  -dict=LibDate/date/fuzz/date.dict -artifact_prefix=$(FUZZ)/artifacts/date- \
	  $(FUZZ)/corpus-date LibDate/date/fuzz/corpus 2>$(FUZZ)/fuzz-date.log || (tail -20 $(FUZZ)/fuzz-date.log; exit 1)
	@tail -1 $(FUZZ)/fuzz-date.log
	@mkdir -p $(FUZZ)/corpus-repeat
	@$(FUZZ)/bin/tvdaterepeat_fuzzer -fork=1 -ignore_crashes=1 -max_total_time=$(FUZZ_SECONDS) -max_len=514 \
	  -dict=LibDate/date/fuzz/repeat.dict -artifact_prefix=$(FUZZ)/artifacts/repeat- \
	  $(FUZZ)/corpus-repeat LibDate/date/fuzz/corpus-repeat 2>$(FUZZ)/fuzz-repeat.log || (tail -20 $(FUZZ)/fuzz-repeat.log; exit 1)
	@tail -1 $(FUZZ)/fuzz-repeat.log
	@mkdir -p $(FUZZ)/corpus-spec
	@$(FUZZ)/bin/tvspec_fuzzer -fork=1 -ignore_crashes=1 -max_total_time=$(FUZZ_SECONDS) -max_len=4096 \
	  -dict=LibDatabase/db/fuzz/spec.dict -artifact_prefix=$(FUZZ)/artifacts/spec- \
	  $(FUZZ)/corpus-spec LibDatabase/db/fuzz/corpus 2>$(FUZZ)/fuzz-spec.log || (tail -20 $(FUZZ)/fuzz-spec.log; exit 1)
	@tail -1 $(FUZZ)/fuzz-spec.log
	@mkdir -p $(FUZZ)/corpus-query
	@$(FUZZ)/bin/tvquery_fuzzer -fork=1 -ignore_crashes=1 -max_total_time=$(FUZZ_SECONDS) -max_len=4096 \
	  -dict=LibDatabase/db/fuzz/query.dict -artifact_prefix=$(FUZZ)/artifacts/query- \
	  $(FUZZ)/corpus-query LibDatabase/db/fuzz/corpus-query 2>$(FUZZ)/fuzz-query.log || (tail -20 $(FUZZ)/fuzz-query.log; exit 1)
	@tail -1 $(FUZZ)/fuzz-query.log
	@if ls $(FUZZ)/artifacts | grep -q .; then \
	  echo "make fuzz: inputs that break the property (replay one: $(FUZZ)/bin/tvserial_fuzzer <file>,"; \
	  echo "tvdate_fuzzer for the date- files, tvdaterepeat_fuzzer for the repeat- files,"; \
	  echo "tvspec_fuzzer for the spec- files, tvquery_fuzzer for the query- files; keep a"; \
	  echo "fixed one in LibDate/date/fuzz/corpus, corpus-repeat, LibDatabase/db/fuzz/corpus"; \
	  echo "or corpus-query):"; \
	  ls -1 $(FUZZ)/artifacts/*; exit 1; \
	fi

# The crash test of the database with many more kills than make check
# gives it (30): `make crash KILLS=5000`, SEED= for another seed.
KILLS ?= 1000
SEED  ?= 20240602

crash: configure
	@cmake --build $(BUILD) -j $(JOBS) --target tvdatabase_crash_tests
	@ASAN_OPTIONS=detect_leaks=1:abort_on_error=0 TV_CRASH_KILLS=$(KILLS) TV_CRASH_SEED=$(SEED) \
	  $(BUILD)/tests/tvdatabase_crash_tests

clean:
	rm -rf $(BUILD) $(RELEASE)

# The sync soak with many more runs than make check gives it:
# `make sync-soak RUNS=500`, SEED= for another seed.
RUNS ?= 300

sync-soak: configure
	@cmake --build $(BUILD) -j $(JOBS) --target tvdatabase_soak_tests tvdbsyncchild
	@ASAN_OPTIONS=detect_leaks=1:abort_on_error=0 TV_SOAK_RUNS=$(RUNS) TV_SOAK_SEED=$(SEED) \
	  $(BUILD)/tests/tvdatabase_soak_tests
