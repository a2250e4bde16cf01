# Norvane: the Windows programs are cross-compiled with mingw-w64 and tested under Wine; the portable layers
# are also built natively, with sanitizers, fuzzers and benchmarks.
#
#   make test    install what is missing, check the formatting, build everything, run every test (native,
#                Windows under Wine, each fuzz target once over its corpus and its saved findings)
#   make format  format every C++ file with the repository's .clang-format
#   make demo    build the sample skin's outputs with nvbuild.exe into demo-out/, and the builder window's
#                snapshots of the sample into demo-out/snap/
#   make run ARGS="inspect examples/skins/gece-mavisi"   nvbuild.exe under Wine, as ./nvbuild does
#   make dist    the Windows programs in dist/
#   make fuzz    run each fuzz target for FUZZ_SECONDS (default 120); findings go to fuzz/findings/
#   make bench   run the benchmarks: natively (Release), then the Windows ones under Wine, then the download and
#                delta ones
#   make sample-skin  redraw the committed sample skin from its generator (installs Pillow and a font if missing)

OUT          ?= out
JOBS         ?= $(shell nproc)
FUZZ_SECONDS ?= 120
SAMPLE       ?= examples/skins/gece-mavisi
CMAKE        := cmake -G Ninja -Wno-dev --log-level=WARNING
WITH_WINE    := scripts/with-wine.sh $(OUT)/windows/wineprefix

.PHONY: all deps native windows fuzz-build bench-build test test-native test-windows dist demo fuzz bench \
        sample-skin format format-check clean run

all: native windows

deps:
	@scripts/deps.sh

$(OUT)/native/build.ninja: | deps
	@$(CMAKE) -S . -B $(OUT)/native -DCMAKE_BUILD_TYPE=Debug -DNV_SANITIZE=ON

$(OUT)/windows/build.ninja: | deps
	@$(CMAKE) -S . -B $(OUT)/windows -DCMAKE_BUILD_TYPE=Release \
	    -DCMAKE_TOOLCHAIN_FILE=cmake/mingw-w64-x86_64.cmake

$(OUT)/fuzz/build.ninja: | deps
	@CC=clang CXX=clang++ $(CMAKE) -S . -B $(OUT)/fuzz -DCMAKE_BUILD_TYPE=RelWithDebInfo -DNV_FUZZ=ON \
	    -DNV_TESTS=OFF

$(OUT)/bench/build.ninja: | deps
	@$(CMAKE) -S . -B $(OUT)/bench -DCMAKE_BUILD_TYPE=Release -DNV_BENCH=ON -DNV_TESTS=OFF

native: $(OUT)/native/build.ninja
	@cmake --build $(OUT)/native -j $(JOBS)

windows: $(OUT)/windows/build.ninja
	@cmake --build $(OUT)/windows -j $(JOBS)

fuzz-build: $(OUT)/fuzz/build.ninja
	@cmake --build $(OUT)/fuzz -j $(JOBS)

bench-build: $(OUT)/bench/build.ninja
	@cmake --build $(OUT)/bench -j $(JOBS)

# One CTest run over the three trees, so the run ends with a single summary.
$(OUT)/CTestTestfile.cmake:
	@mkdir -p $(OUT)
	@printf 'subdirs("native" "windows" "fuzz")\n' > $@

format-check: deps
	@scripts/check-format.sh

test: deps format-check native windows fuzz-build $(OUT)/CTestTestfile.cmake
	@$(WITH_WINE) ctest --test-dir $(OUT) --output-on-failure -j $(JOBS)

test-native: native
	@ctest --test-dir $(OUT)/native --output-on-failure -j $(JOBS)

test-windows: windows
	@$(WITH_WINE) ctest --test-dir $(OUT)/windows --output-on-failure -j $(JOBS)

dist: windows
	@mkdir -p dist
	@cp $(OUT)/windows/cli/nvbuild.exe dist/
	@# The builder window and the template it builds from, once their layers are part of the tree.
	@for f in $(OUT)/windows/ui/NorvaneOlusturucu.exe $(OUT)/windows/patcher/Norvane.Template.exe; do \
	    if [ -f $$f ]; then cp $$f dist/; fi; \
	done
	@echo "dist/: $$(cd dist && ls)"

demo: dist
	@$(WITH_WINE) scripts/demo.sh dist $(SAMPLE) demo-out

# The build's own output stays out of the way (its errors still show on stderr).
run:
	@$(MAKE) --no-print-directory dist >/dev/null
	@./nvbuild $(ARGS)

fuzz: fuzz-build
	@scripts/fuzz.sh $(OUT)/fuzz $(FUZZ_SECONDS)

# Each program runs alone (the machine is shared and the numbers are wall time); the first failure stops.
bench: bench-build windows
	@for b in $(OUT)/bench/bench/bench_*; do [ -x "$$b" ] || continue; \
	    echo "== native $$(basename $$b)"; $$b || exit 1; done
	@$(WITH_WINE) sh -c 'for b in $(OUT)/windows/bench/bench_*.exe; do \
	    echo "== windows $$(basename $$b)"; $(OUT)/windows/wine-run "$$b" || exit 1; done'
	@echo "== download (nginx, aria2c, curl; the patcher with NV_BENCH_PATCHER)"
	@NV_BENCH_PATCHER_PREPARE="OUT=$(abspath $(OUT)) $(CURDIR)/bench/patcher_bench.sh prepare {config_url} {dest} {connections} {segment_mb}" \
	 NV_BENCH_PATCHER="OUT=$(abspath $(OUT)) $(CURDIR)/bench/patcher_bench.sh run {config_url} {dest} {connections} {segment_mb}" \
	 NV_BENCH_PATCHER_START="OUT=$(abspath $(OUT)) $(CURDIR)/bench/patcher_bench.sh start" \
	 $(WITH_WINE) bench/bench_download.py
	@echo "== delta updates (nginx, the patcher with and without chunk indexes)"
	@OUT=$(abspath $(OUT)) $(WITH_WINE) bench/bench_delta.py

# The sample skin is committed, so only a change to its generator needs this (and the packages below, which the
# builds and CI never need). /usr/bin/python3 is named because Debian's Pillow belongs to Debian's Python.
SKIN_PACKAGES := python3-pil fonts-dejavu-core

sample-skin:
	@missing=""; for p in $(SKIN_PACKAGES); do \
	    dpkg-query -W -f='$${Status}' $$p 2>/dev/null | grep -q 'install ok installed' || missing="$$missing $$p"; \
	done; \
	if [ -n "$$missing" ]; then \
	    echo "sample-skin: installing$$missing"; \
	    sudo=""; [ "$$(id -u)" -eq 0 ] || sudo=sudo; \
	    $$sudo apt-get update -qq && \
	    $$sudo env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends $$missing >/dev/null; \
	fi
	@/usr/bin/python3 examples/skins/tools/make_sample_skin.py

format: deps
	@git ls-files --cached --others --exclude-standard -- '*.cpp' '*.h' | xargs clang-format --style=file -i

clean:
	rm -rf $(OUT) dist demo-out
