# The entry points of the project. Each installs what is missing, builds
# what it needs, and runs.
BUILD   ?= build
JOBS    ?= $(shell nproc 2>/dev/null || echo 2)
PREFIX  ?= /usr/local
DESTDIR ?=
ALL_TARGETS = -doc -esterel -lustre -nusmv -blif -c -csharp -vhdl -altera -systemc -qsr -valued_simul

# The executables a user runs (and the module generator the demo and the
# benchmarks use); `make`, `make demo` and `make release` build these alone.
EXECUTABLES ?= tarn bram mosk zkcgen
INSTALLED   ?= tarn bram mosk
# Examples whose C cannot compile by the generation rules (see the README).
C_LITERAL_FAILURES = accu

.PHONY: all deps configure executables build demo test test-long test-sanitize fuzz release bench install uninstall clean

all: executables

deps:
	bash scripts/install-deps

# A build folder keeps the configuration it was made with (the sanitizer
# folder stays one when its tests install from it).
configure: deps
	@if [ -f $(BUILD)/CMakeCache.txt ]; then cmake -S . -B $(BUILD) > /dev/null; \
	else cmake -S . -B $(BUILD) -DCMAKE_BUILD_TYPE=RelWithDebInfo; fi

executables: configure
	cmake --build $(BUILD) -j $(JOBS) $(addprefix --target ,$(EXECUTABLES))

# Everything, the tests included.
build: configure
	cmake --build $(BUILD) -j $(JOBS)

# Runs tarn on every bundled example, asking for every target; the outputs
# land in out/ beside a copy of each module. A run that stops with status 1
# has said why (a constant without a value for a target's language, say)
# and the next example goes on; any other failure stops the demo. Then the
# C of each example is compiled with the user files of examples/user and
# run on its trace. The ZK sources of examples/ are compiled by bram into
# out/zk/, and tarn runs on each module in the same way.
demo: executables
	@mkdir -p out
	@set -e; for f in examples/*.zkc; do \
	  cp $$f out/; \
	  echo "== $$f"; \
	  status=0; ( unset DISPLAY; ./$(BUILD)/driver/tarn out/$$(basename $$f) $(ALL_TARGETS) ) || status=$$?; \
	  if [ $$status -eq 1 ]; then echo "== $$f: stopped with status 1"; elif [ $$status -ne 0 ]; then exit $$status; fi; \
	done
	@set -e; for f in examples/*.zkc; do \
	  m=$$(basename $$f .zkc); \
	  echo "== C of $$m on examples/$$m.trace"; \
	  if echo " $(C_LITERAL_FAILURES) " | grep -q " $$m "; then \
	    if bash examples/run_c.sh out $$m > out/$$m.run.txt 2>&1; then \
	      echo "$$m: its C was expected not to compile"; exit 1; \
	    else \
	      echo "$$m: does not compile, as expected (a bound output is assigned but is no parameter)"; \
	    fi; \
	  else \
	    bash examples/run_c.sh out $$m; \
	  fi; \
	done
	@mkdir -p out/zk
	@set -e; for f in examples/*.zk; do \
	  echo "== $$f"; \
	  ./$(BUILD)/driver/bram -o out/zk $$f || exit $$?; \
	done; \
	for z in out/zk/*.zkc; do \
	  echo "== $$z"; \
	  status=0; ( unset DISPLAY; ./$(BUILD)/driver/tarn $$z $(ALL_TARGETS) ) || status=$$?; \
	  if [ $$status -eq 1 ]; then echo "== $$z: stopped with status 1"; elif [ $$status -ne 0 ]; then exit $$status; fi; \
	done

test: build
	cd $(BUILD) && env -u DISPLAY ctest --output-on-failure -j $(JOBS) --timeout 600 -LE long

# The sweeps of many random modules through the slow consumers.
test-long: build
	cd $(BUILD) && env -u DISPLAY ctest --output-on-failure -j $(JOBS) --timeout 3000 -L long

# The whole suite built with the address and undefined-behaviour
# sanitizers, any report fatal. Objects that live until the process ends
# are by design, so leaks are not looked for.
test-sanitize: deps
	cmake -S . -B $(BUILD)-sanitize -DCMAKE_BUILD_TYPE=Debug -DTARN_SANITIZE=ON
	cmake --build $(BUILD)-sanitize -j $(JOBS)
	cd $(BUILD)-sanitize && env -u DISPLAY ASAN_OPTIONS=detect_leaks=0:abort_on_error=0 \
	  UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
	  ctest --output-on-failure -j $(JOBS) --timeout 1200 -LE long

# Every fuzz target of the tree (a fuzz/ folder beside each reader) for
# FUZZ_TIME seconds each, from the corpus kept beside it (<name>_corpus/
# for the target <name>_fuzz when there is one, else corpus/, and likewise
# <name>.dict before any other dictionary there); the whole log and
# what is found land in $(BUILD)-fuzz/runs/<target>/, and the coverage at
# the start and the end, the figures and any finding are printed.
# A target runs in slices of FUZZ_SLICE seconds, each a fresh process on
# the corpus grown so far: the modules a run makes live until its process
# ends, so one process over millions of inputs would grow without bound.
FUZZ_TIME  ?= 60
FUZZ_SLICE ?= 300
fuzz: deps
	CC=clang CXX=clang++ cmake -S . -B $(BUILD)-fuzz -DCMAKE_BUILD_TYPE=RelWithDebInfo -DTARN_FUZZ=ON
	cmake --build $(BUILD)-fuzz -j $(JOBS) $$(cmake --build $(BUILD)-fuzz --target help | sed -n 's/^\.\.\. \([a-z_]*_fuzz\)$$/--target \1/p')
	@set -e; found=0; for f in $(BUILD)-fuzz/fuzz/*/*_fuzz; do \
	  name=$$(basename $$f); src=$$(basename $$(dirname $$f))/fuzz; \
	  run=$(BUILD)-fuzz/runs/$$name; mkdir -p $$run/corpus; \
	  seeds=$$src/$${name%_fuzz}_corpus; [ -d $$seeds ] || seeds=$$src/corpus; \
	  cp -n $$seeds/* $$run/corpus/ 2>/dev/null || true; \
	  dict=""; for d in $$src/*.dict; do [ -f $$d ] && dict="-dict=$$d"; done; \
	  if [ -f $$src/$${name%_fuzz}.dict ]; then dict="-dict=$$src/$${name%_fuzz}.dict"; fi; \
	  echo "== $$name for $(FUZZ_TIME) s"; : > $$run/fuzz.log; \
	  left=$(FUZZ_TIME); while [ $$left -gt 0 ]; do \
	    slice=$$(( left < $(FUZZ_SLICE) ? left : $(FUZZ_SLICE) )); left=$$(( left - slice )); \
	    ( cd $$run && ASAN_OPTIONS=detect_leaks=0 $(CURDIR)/$$f corpus $$(echo $$dict | sed 's|=|=$(CURDIR)/|') \
	        -max_total_time=$$slice -timeout=10 -rss_limit_mb=4096 -print_final_stats=1 ) >> $$run/fuzz.log 2>&1 || left=0; \
	  done; \
	  grep -E '^#[0-9]+[[:space:]]+(INITED|DONE)|^Done|^stat::number|^stat::new|^stat::peak|^==[0-9]+==|^SUMMARY' $$run/fuzz.log; \
	  if ls $$run | grep -E '^(crash|timeout|leak|oom)-'; then echo "$$name: findings in $$run"; found=1; fi; \
	done; exit $$found

release: deps
	cmake -S . -B $(BUILD)-release -DCMAKE_BUILD_TYPE=Release
	cmake --build $(BUILD)-release -j $(JOBS) $(addprefix --target ,$(EXECUTABLES))

bench: build
	@for b in $(BUILD)/bench/*_bench; do [ -x $$b ] && $$b; done

# The executables and their manual pages, written from the README's
# sections, under $(DESTDIR)$(PREFIX).
install: executables
	@set -e; for e in $(INSTALLED); do \
	  install -D -m 755 $$(find $(BUILD) -maxdepth 2 -type f -name $$e -perm -u+x | head -1) $(DESTDIR)$(PREFIX)/bin/$$e; \
	  mkdir -p $(BUILD)/man; bash tools/readme2man.sh $$e > $(BUILD)/man/$$e.1; \
	  install -D -m 644 $(BUILD)/man/$$e.1 $(DESTDIR)$(PREFIX)/share/man/man1/$$e.1; \
	done

uninstall:
	@for e in $(INSTALLED); do \
	  rm -f $(DESTDIR)$(PREFIX)/bin/$$e $(DESTDIR)$(PREFIX)/share/man/man1/$$e.1; \
	done

clean:
	rm -rf $(BUILD) $(BUILD)-release $(BUILD)-sanitize $(BUILD)-fuzz out
