#!/usr/bin/env bash
# check_abi.sh [--keep]: compares what programs can see of the shared library with the last release:
# the library of the last tag v<version>, or, in a clone without tags, the description that
# packaging/abi keeps of it. Fails when a program that was built with that release would not run with
# this library. With --keep it writes that description anew, as a release does.
set -euo pipefail
source "$(dirname "$0")/common.sh"
kept=$ROOT/packaging/abi/libzanengine.abi.gz
cd "$ROOT"

# describe <source tree> <build tree> <file>: builds the library alone, with the debug information
# that tells its types, and writes what is public of it.
describe() {
    command -v ccache >/dev/null && export CMAKE_CXX_COMPILER_LAUNCHER=ccache
    local options=(-DCMAKE_BUILD_TYPE=Debug "-DCMAKE_CXX_FLAGS_DEBUG=-O1 -g" -DZAN_INSTALL=ON
                   -DCMAKE_CXX_COMPILER=g++) part
    for part in SERVER TRANSPORTS APPS TESTS BENCHMARKS EXAMPLES; do
        options+=("-DZAN_BUILD_$part=OFF")
    done
    cmake -S "$1" -B "$2" -G Ninja --log-level=NOTICE "${options[@]}" >/dev/null
    cmake --build "$2" >/dev/null
    rm -rf "$2/headers"
    cmake --install "$2" --prefix "$2/headers" >/dev/null
    abidw --headers-dir "$2/headers/include/zanengine" --drop-private-types --no-corpus-path \
        --no-comp-dir-path --no-show-locs --out-file "$3" "$2/lib/libzanengine.so"
    sed -i "s|$(realpath "$1")/||g" "$3"
}

mkdir -p build/abi
describe "$ROOT" build/abi/now build/abi/now.abi
if [[ ${1-} == --keep ]]; then
    mkdir -p "$(dirname "$kept")"
    gzip -9n <build/abi/now.abi >"$kept"
    say "wrote packaging/abi/libzanengine.abi.gz"
    exit 0
fi

before=build/abi/before.abi
gunzip -c "$kept" >"$before"
tag=$(git describe --tags --match 'v[0-9]*' --abbrev=0 2>/dev/null || true)
if [[ -n $tag ]]; then
    before=build/abi/$tag.abi
    rm -rf "build/abi/$tag-source" && mkdir -p "build/abi/$tag-source"
    git archive "$tag" | tar -x -C "build/abi/$tag-source"
    describe "build/abi/$tag-source" "build/abi/$tag" "$before"
fi
say "comparing with ${tag:-the kept description of the last release}"
status=0
abidiff --no-added-syms "$before" build/abi/now.abi || status=$?
# Bit 8 tells a change that breaks programs; bits 1 and 2 tell errors of the tool or its call.
((status & 1 || status & 2)) && fail "abidiff could not compare"
((status & 8)) && fail "programs built with the last release would break: see above. That needs a \
higher ZAN_SONAME in CMakeLists.txt, and scripts/lib/check_abi.sh --keep"
((status & 4)) && say "there are changes, which break no program"
say "programs built with the last release run with this library"
