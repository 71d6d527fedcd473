# Short names for the presets in CMakePresets.json and the scripts in scripts/. `make help` lists them.
release := build/release
sources = git ls-files '*.h' '*.cpp'

help:
	@sed -n 's/^\([a-z0-9-]*\):.*## /  make \1	/p' Makefile | expand -t 24

run: packages $(release)/build.ninja  ## build, and show every effect and menu in out/
	cmake --build --preset release --target nifikral nifikral_module
	scripts/demo.sh $(release)/bin/nifikral out

reference: packages $(release)/build.ninja  ## show every effect with all of its parameters on the page out/reference.html
	cmake --build --preset release --target nifikral nifikral_module
	scripts/sample_media.sh out/input
	$(release)/bin/nifikral reference -y out/input/photo.jpg -o out/reference.html

# A small photograph, so that what effects do to single pixels shows in small.
pictures: configure  ## make the pictures of the README and of the studio again
	cmake --build --preset release --target nifikral nifikral_module
	mkdir -p out docs/pictures
	ffmpeg -nostdin -v error -y -i /usr/share/backgrounds/Picture_1A_by_freespace.jpg -vf scale=480:-2:flags=area out/small.png
	scripts/contact_sheet.sh $(release)/bin/nifikral docs/pictures/effects.jpg out/small.png 160 8
	scripts/contact_sheet.sh $(release)/bin/nifikral docs/pictures/menus.jpg generators 208 6
	scripts/studio_pictures.py $(release)/bin/nifikral docs/pictures

sheets: packages $(release)/build.ninja  ## show every menu with many kinds of pictures, on sheets in out/
	scripts/install_packages.sh photographs
	cmake --build --preset release --target nifikral nifikral_module
	scripts/menu_sheets.sh $(release)/bin/nifikral out $(TEMPLATES)

test: configure  ## build everything and run every test
	cmake --build --preset release
	ctest --preset release

# A test program for 64-bit ARM runs in qemu, and so do those for x86-64 on processors without AVX2 and SSE4.
test-arm64: packages  ## build the module and its tests for 64-bit ARM and run them here
	scripts/install_packages.sh test arm64
	scripts/arm64_sysroot.sh build/arm64-sysroot
	cmake --preset arm64
	cmake --build --preset arm64
	ctest --preset arm64

test-processors: configure  ## run the effects as on older processors
	scripts/install_packages.sh arm64
	cmake --build --preset release --target module_hashes effects_tests
	scripts/test_processors.sh $(release)

test-clang: packages  ## build everything with Clang and run every test
	scripts/install_packages.sh test clang
	cmake --preset clang
	cmake --build --preset clang
	ctest --preset clang

test-tsan: packages  ## run what has threads under the thread sanitizer
	scripts/install_packages.sh test
	cmake --preset tsan
	cmake --build --preset tsan
	ctest --preset tsan

# SECONDS is for each fuzzer; with SEED=1 it tries the same inputs each time.
fuzz: packages  ## look for inputs that break the code, SECONDS=60 with each fuzzer
	scripts/install_packages.sh clang
	cmake --preset fuzz
	cmake --build --preset fuzz
	SEED=$(SEED) scripts/fuzz.sh build/fuzz $(or $(SECONDS),60)

soak: configure  ## work on and on in one process: make soak SECONDS=3600
	cmake --build --preset release
	/usr/bin/python3 scripts/soak.py $(release) $(or $(SECONDS),60)

# BENCH is passed on, for instance BENCH=--benchmark_filter=gray.
bench: configure  ## time the effects
	cmake --build --preset release --target nifikral_bench
	$(release)/bin/nifikral_bench $(BENCH)

bench-peers: packages  ## time public libraries against the effects
	scripts/bench_peers.sh $(BENCH)

# What packages hold is as old as the last commit, so that the same sources give the same bytes.
dated = SOURCE_DATE_EPOCH=$${SOURCE_DATE_EPOCH:-$$(git log -1 --format=%ct)}

debs: packages  ## make Debian packages in build/package
	scripts/install_packages.sh package
	cmake --preset package
	cmake --build --preset package
	rm -f build/package/*.deb
	cd build/package && $(dated) cpack -G DEB

# The system's own command says what bytes those for the other processor have to give.
debs-arm64: packages  ## make Debian packages for 64-bit ARM in build/package-arm64
	scripts/install_packages.sh package arm64
	scripts/arm64_sysroot.sh build/arm64-sysroot
	cmake --preset package-arm64
	cmake --build --preset package-arm64
	rm -f build/package-arm64/*.deb
	cd build/package-arm64 && $(dated) cpack -G DEB

test-packages-arm64: debs-arm64 $(release)/build.ninja  ## unpack these and use them in qemu
	cmake --build --preset release --target nifikral nifikral_module
	scripts/test_packages_arm64.sh build/package-arm64 $(release)/bin/nifikral

test-packages: debs  ## install the packages into a clean Debian and use them there, as root
	scripts/test_packages.sh build/package

test-reproducible: debs  ## make the packages again in another folder, and compare them
	scripts/test_reproducible.sh build/package

format:  ## reformat the sources
	$(sources) | xargs clang-format-14 -i

check-format:  ## list the sources that clang-format would change
	scripts/install_packages.sh lint
	$(sources) | xargs clang-format-14 --dry-run --Werror

tidy: configure  ## run clang-tidy over the module, the command and the bridges
	scripts/install_packages.sh lint
	scripts/tidy.sh $(release)

clean:  ## remove everything that was built or made
	rm -rf build out

# A demonstration needs neither tests nor benchmarks; an already configured folder keeps its choice.
$(release)/build.ninja: | packages
	cmake --preset release -D NIFIKRAL_BUILD_TESTS=OFF -D NIFIKRAL_BUILD_BENCH=OFF

packages:
	scripts/install_packages.sh build

configure: packages
	scripts/install_packages.sh test
	cmake --preset release -D NIFIKRAL_BUILD_TESTS=ON -D NIFIKRAL_BUILD_BENCH=ON

.PHONY: help run reference pictures sheets test test-arm64 test-processors test-clang test-tsan fuzz soak bench bench-peers \
    debs debs-arm64 test-packages test-packages-arm64 test-reproducible format check-format tidy clean packages configure
