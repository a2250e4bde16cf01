#!/usr/bin/env bash
# Installs the packages that the builds, tests, fuzzers and benchmarks need, and only those that are missing.
# A machine that already has everything gets through this in well under a second.
set -euo pipefail

packages=(
    cmake ninja-build make g++      # native build
    g++-mingw-w64-x86-64-posix      # Windows x64 cross compiler (posix threads) with windres
    wine64 xvfb                     # running and testing the Windows programs
    googletest                      # GoogleTest sources, built for each target
    nlohmann-json3-dev              # JSON (header-only): the server feed
    libxxhash-dev python3-xxhash    # XXH3-128 (header-only use): chunk hashes of delta updates; its Python referee
    libbenchmark-dev zlib1g-dev     # benchmarks (zlib is a yardstick there and a reference in tests only)
    clang libclang-rt-14-dev        # libFuzzer with the sanitizers
    clang-format                    # the formatting that `make test` checks
    python3 zip p7zip-full libarchive-tools   # test fixtures: archives from several real archivers
    libjpeg-turbo-progs             # cjpeg, for the JPEG fixtures of scripts/make-image-fixtures.py
    fonts-inter fonts-dejavu-core   # free look-alikes of Segoe UI, Tahoma and Consolas (snapshots, text under Wine)
    nginx-light curl aria2 openssl  # transfer tests and benchmarks: a real web server, referee clients, TLS keys
    osslsigncode                    # signing tests: real signatures and time stamps on a test file (with openssl)
    python3-cryptography            # update key tests: the referee that checks and makes ECDSA P-256 signatures
)

missing=()
for p in "${packages[@]}"; do
    if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed'; then
        missing+=("$p")
    fi
done
[ ${#missing[@]} -eq 0 ] && exit 0

echo "deps: installing ${missing[*]}"
sudo=""
[ "$(id -u)" -eq 0 ] || sudo="sudo"
export DEBIAN_FRONTEND=noninteractive
$sudo apt-get update -qq
$sudo apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
echo "deps: done"
