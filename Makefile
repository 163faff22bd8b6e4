# The two entry points of the project. Each installs what is missing,
# builds, and runs.
BUILD ?= build
JOBS  ?= $(shell nproc 2>/dev/null || echo 2)
ALL_TARGETS = -doc -esterel -lustre -nusmv -blif -c -csharp -vhdl -altera -systemc -qsr -valued_simul

.PHONY: deps build demo test test-long release bench clean

# The executables a user runs; `make release` builds them alone in an
# optimised configuration of their own.
EXECUTABLES ?= tarn bram

deps:
	bash scripts/install-deps

build: deps
	cmake -S . -B $(BUILD) -DCMAKE_BUILD_TYPE=RelWithDebInfo
	cmake --build $(BUILD) -j $(JOBS)

# Runs tarn on every bundled example, asking for every target; the outputs
# land in out/ beside a copy of each module. The ZK sources of examples/
# are compiled by bram into out/zk/, and tarn runs on each module.
demo: build
	@mkdir -p out
	@set -e; for f in examples/*.zkc; do \
	  cp $$f out/; \
	  echo "== $$f"; \
	  ( unset DISPLAY; ./$(BUILD)/driver/tarn out/$$(basename $$f) $(ALL_TARGETS) ) || exit $$?; \
	done
	@mkdir -p out/zk
	@set -e; for f in examples/*.zk; do \
	  echo "== $$f"; \
	  ./$(BUILD)/driver/bram -o out/zk $$f || exit $$?; \
	done; \
	for z in out/zk/*.zkc; do \
	  echo "== $$z"; \
	  ( unset DISPLAY; ./$(BUILD)/driver/tarn $$z $(ALL_TARGETS) ) || exit $$?; \
	done

test: build
	cd $(BUILD) && env -u DISPLAY ctest --output-on-failure -j $(JOBS) --timeout 600 -LE long

# The sweeps of many random modules through the slow consumers.
test-long: build
	cd $(BUILD) && env -u DISPLAY ctest --output-on-failure -j $(JOBS) --timeout 3000 -L long

release: deps
	cmake -S . -B $(BUILD)-release -DCMAKE_BUILD_TYPE=Release
	cmake --build $(BUILD)-release -j $(JOBS) $(addprefix --target ,$(EXECUTABLES))

bench: build
	@for b in $(BUILD)/bench/*_bench; do [ -x $$b ] && $$b; done

clean:
	rm -rf $(BUILD) $(BUILD)-release out
