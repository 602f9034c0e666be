# What the scripts share: words on the terminal, packages, the build trees. To be sourced by bash.

# The tests' precompiled headers are no reason for ccache not to keep what is built with them.
export CCACHE_SLOPPINESS=pch_defines,time_macros

ROOT=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)

# What the library, its transports, tests and benchmarks are built with.
BUILD_PACKAGES=(g++ cmake ninja-build pkg-config libgtest-dev libbenchmark-dev libquickfix-dev
                libsqlite3-dev libmicrohttpd-dev prometheus-cpp-dev libxml2-dev libcli11-dev
                nlohmann-json3-dev)
# What the gates of scripts/ci need beyond that.
GATE_PACKAGES=(clang clang-format clang-tidy ccache doxygen g++-multilib git python3 make zsh fish
               curl python3-yaml)

say() {
    printf '== %s\n' "$*"
}

fail() {
    printf '!! %s\n' "$*" >&2
    exit 1
}

# need_packages <name>...: installs the Debian packages that are missing, and says which.
need_packages() {
    if ! command -v dpkg-query >/dev/null || ! command -v apt-get >/dev/null; then
        say "This is no Debian system; needed are what Debian calls: $*"
        return 0
    fi
    local missing=() name
    for name in "$@"; do
        dpkg-query -W -f '${Status}' "$name" 2>/dev/null | grep -q ' installed$' ||
            missing+=("$name")
    done
    ((${#missing[@]} == 0)) && return 0
    say "Installing Debian packages: ${missing[*]}"
    local log
    log=$(mktemp)
    if ! { as_root apt-get update -q && as_root apt-get install -q -y --no-install-recommends \
        "${missing[@]}"; } >"$log" 2>&1; then
        tail -n 20 "$log" >&2
        fail "apt-get could not install: ${missing[*]}"
    fi
    rm -f "$log"
}

as_root() {
    if ((EUID == 0)); then
        DEBIAN_FRONTEND=noninteractive "$@"
    elif command -v sudo >/dev/null; then
        sudo DEBIAN_FRONTEND=noninteractive "$@"
    else
        echo "neither root nor sudo to run: $*" >&2
        return 1
    fi
}

# configure <preset> [<cmake argument>...]: configures build/<preset> when that was not done yet,
# or when arguments ask for a setting; ninja itself sees changed build files.
configure() {
    local preset=$1
    shift
    if (($# == 0)) && [[ -f $ROOT/build/$preset/build.ninja ]]; then
        return 0
    fi
    if command -v ccache >/dev/null; then
        export CMAKE_CXX_COMPILER_LAUNCHER=ccache
    fi
    (cd "$ROOT" && cmake --preset "$preset" "$@" --log-level=NOTICE) ||
        fail "build/$preset could not be configured"
}

# build <preset> [<target>...]: builds all, or the targets named, in build/<preset>.
build() {
    local preset=$1
    shift
    local status='[%f of %t] '
    (cd "$ROOT" && NINJA_STATUS=$status cmake --build --preset "$preset" \
        ${1:+--target "$@"}) || fail "build/$preset could not be built"
}
