# The two set-up commands are `make run` and `make check`; both install
# what is missing first. `make bench` runs the Release benchmarks.

BUILD   := build
RELEASE := build-release
CMAKE_FLAGS := -G Ninja -DCMAKE_BUILD_TYPE=Debug -DTV_SANITIZE=ON
JOBS    ?= $(shell nproc)

.PHONY: all setup configure build check run bench clean

all: build

setup:
	@bash scripts/setup.sh

$(BUILD)/build.ninja: CMakeLists.txt | setup
	@cmake -S . -B $(BUILD) $(CMAKE_FLAGS) >/dev/null

configure: setup $(BUILD)/build.ninja

build: configure
	@cmake --build $(BUILD) -j $(JOBS)

check: build
	@cd $(BUILD) && ASAN_OPTIONS=detect_leaks=1:abort_on_error=0 QT_QPA_PLATFORM=offscreen \
	  ctest --output-on-failure -j $(JOBS) --timeout 300

run: build
	@if [ -x $(BUILD)/bin/tarvello-maths ]; then \
	  $(BUILD)/bin/tarvello-maths; \
	else \
	  echo "make run: built; the program's entry (build/bin/tarvello-maths) does not exist yet."; \
	fi

bench: setup
	@cmake -S . -B $(RELEASE) -G Ninja -DCMAKE_BUILD_TYPE=Release -DTV_BENCHMARKS=ON -DTV_TESTS=OFF >/dev/null
	@cmake --build $(RELEASE) -j $(JOBS)
	@for b in $(RELEASE)/bin/bench_*; do echo "== $$b"; $$b; done

clean:
	rm -rf $(BUILD) $(RELEASE)
