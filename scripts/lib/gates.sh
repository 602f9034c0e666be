# The gates of scripts/ci: gate_<name> runs in the root of the project, under set -e, and fails by
# its exit status. To be sourced after common.sh.

# In the order in which `all` runs them: the quick ones first, then what others build upon.
GATES=(format arrows build headers test docs install packages abi bench crash fuzz tidy m32 asan tsan)

list_gates() {
    cat <<'TEXT'
format   the layout of every C++ file, by clang-format
arrows   includes go down the table of folders, never up
build    GCC, and Clang with sanitizers; warnings are errors
headers  each public header alone: GCC and Clang, C++17, C++20 and C++23; names as in the dictionaries
test     all tests, in the build tree of scripts/test
docs     API pages without warnings; every block and every link of the documents
install  the installed package, proved by consumers outside the tree; and as a subproject
packages the Debian packages, made, installed into a fresh folder and used there; other recipes
abi      programs built with the last release run with this library
bench    every benchmark, run briefly
crash    a program under load is killed 200 times, and nothing is lost
fuzz     every fuzzer, half a minute of work each
tidy     clang-tidy over every source
m32      library and tests as 32-bit programs
asan     tests under AddressSanitizer, LeakSanitizer and UndefinedBehaviorSanitizer
tsan     the same under ThreadSanitizer and with free lists, without those of the programs

Not among `all`:
changes  clang-tidy over the sources that the last six hours or 20 commits changed, which CI runs
         instead of tidy
interop  both roles against jspurefix, an independent FIX implementation; installs packages of npm's
TEXT
}

tracked() {
    git ls-files -- "$@"
}

gate_format() {
    tracked '*.h' '*.cpp' | xargs -r -P 2 -n 25 clang-format --dry-run -Werror
}

gate_arrows() {
    python3 scripts/lib/check_arrows.py
}

gate_build() {
    build_default
    configure asan
    build asan
}

# The tree of scripts/test, where CI also turns warnings into errors.
build_default() {
    grep -qs '^ZAN_WARNINGS_AS_ERRORS:BOOL=ON' build/default/CMakeCache.txt ||
        configure default -DZAN_WARNINGS_AS_ERRORS=ON
    build default
}

gate_headers() {
    build_default
    python3 scripts/lib/make_names.py --check
    python3 scripts/lib/check_headers.py build/default/public_headers.txt
}

gate_test() {
    build_default
    ctest --preset default
}

gate_docs() {
    build_default
    mkdir -p build/docs
    {
        cat docs/Doxyfile
        printf 'INPUT = %s\n' "$(tr '\n' ' ' <build/default/public_headers.txt)"
    } | doxygen -
    python3 scripts/lib/test_documents.py build/default
    python3 scripts/lib/check_documents.py build/default
}

gate_install() {
    build_default
    bash scripts/lib/check_install.sh build/default
}

gate_packages() {
    need_packages dpkg-dev file
    build_default
    bash scripts/lib/check_packages.sh build/default
    python3 scripts/lib/check_recipes.py build/recipes
}

gate_abi() {
    need_packages abigail-tools
    bash scripts/lib/check_abi.sh
}

gate_bench() {
    configure default
    build default zan_benchmarks zan-bench-engine
    build/default/bin/zan_benchmarks --benchmark_min_time=0.001
    build/default/bin/zan-bench-engine --quick
}

# Six fuzzers share two cores: half a minute of work for each.
gate_fuzz() {
    bash scripts/fuzz 90
}

# One run spends half of its time waiting, so there are two.
gate_crash() {
    configure default
    build default crash_run
    local seed=$RANDOM log=build/crash.log other status=0
    build/default/tests/crash_run 100 "$((seed + 1000))" >"$log" 2>&1 &
    other=$!
    build/default/tests/crash_run 100 "$seed" || status=1
    wait "$other" || status=1
    cat "$log"
    return "$status"
}

READ_BY_TIDY='infra|errors|message|events|adapter|engine|guaranteed|server|transports|apps|examples'

gate_tidy() {
    tidy "$ROOT/($READ_BY_TIDY)/.*"
}

# A clone without the history of these commits is read as a whole.
gate_changes() {
    local sixHoursAgo base
    if ! git rev-parse -q --verify HEAD~20 >/dev/null; then
        gate_tidy
        return
    fi
    sixHoursAgo=$(git rev-list -1 --before='6 hours ago' HEAD)
    base=$(git merge-base HEAD~20 "${sixHoursAgo:-HEAD~20}")
    local changed
    changed=$(git diff --name-only --diff-filter=d "$base" -- '*.cpp' |
        sed -nE "\\%^($READ_BY_TIDY)/%p" | paste -sd '|')
    [[ -z $changed ]] || tidy "$ROOT/($changed)$"
}

# tidy <pattern>: reads the sources that match, each alone.
tidy() {
    configure clang
    if ! run-clang-tidy -quiet -j 2 -p build/clang "$1" >build/tidy.log 2>&1; then
        grep -v -e ' warnings generated' -e '^clang-tidy' build/tidy.log
        return 1
    fi
}

gate_m32() {
    test_in m32
}

gate_asan() {
    export ASAN_OPTIONS=detect_leaks=1:strict_string_checks=1:check_initialization_order=1
    export UBSAN_OPTIONS=print_stacktrace=1
    test_in asan
}

gate_tsan() {
    export TSAN_OPTIONS=halt_on_error=1:second_deadlock_stack=1
    test_in tsan
}

test_in() {
    configure "$1"
    build "$1"
    ctest --preset "$1"
}

# The peer and what it needs go into the build tree; no script of a package is run.
gate_interop() {
    command -v npm >/dev/null || need_packages nodejs npm
    configure default
    build default interop_tests
    local folder=$ROOT/build/interop
    mkdir -p "$folder"
    cp tests/interop/package.json tests/interop/package-lock.json "$folder"
    npm ci --prefix "$folder" --ignore-scripts --no-audit --no-fund
    NODE_PATH=$folder/node_modules build/default/tests/interop_tests
}
