# The two set-up commands of the README: `make run` and `make test`.
# Each installs what is missing, configures, builds and then runs.
PRESET ?= debug
BUILD  := build/$(PRESET)
JOBS   ?= $(shell nproc)

.PHONY: deps configure build run test bench soak fuzz asan clean

deps:
	@scripts/setup-deps.sh

configure: deps
	@cmake --preset $(PRESET) >/dev/null

build: configure
	@cmake --build --preset $(PRESET) -j $(JOBS)

run: build
	@scripts/run-app.sh $(BUILD)

test: build
	@scripts/run-tests.sh $(BUILD)

bench: deps
	@cmake --preset release >/dev/null
	@cmake --build --preset release -j $(JOBS)
	@scripts/run-bench.sh build/release

# The service under load on PostgreSQL, killed and restarted half way (SOAK_SECONDS, default 60; loopback only).
soak: deps
	@cmake --preset release >/dev/null
	@cmake --build --preset release -j $(JOBS) --target soak_host adjustacc-host
	@scripts/run-soak.sh build/release

fuzz: deps
	@cmake --preset fuzz >/dev/null
	@cmake --build --preset fuzz -j $(JOBS)
	@scripts/run-fuzz.sh build/fuzz

asan:
	@$(MAKE) test PRESET=asan

clean:
	rm -rf build
