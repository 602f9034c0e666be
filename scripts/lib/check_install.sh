#!/usr/bin/env bash
# check_install.sh <build tree>: installs the build into a fresh prefix, moves the prefix away, looks
# at where its programs look for libraries, and proves it by projects outside the tree: a CMake
# package, pkg-config, adapter modules, the adapter kit, the steps of the adapter guide. Then takes
# the project as a subproject.
set -euo pipefail
source "$(dirname "$0")/common.sh"
tree=$(cd "$1" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
prefix=$work/moved
command -v ccache >/dev/null && export CMAKE_CXX_COMPILER_LAUNCHER=ccache

quietly() {
    "$@" >"$work/log" 2>&1 || {
        cat "$work/log" >&2
        fail "failed: $*"
    }
}

# Copies a project out of the tree, so that nothing but the package can be found, and builds it.
build_outside() {
    local source=$1 name=$2
    shift 2
    quietly cmake -S "$source" -B "$work/$name" -G Ninja "$@"
    quietly cmake --build "$work/$name"
}

say "installing and moving the prefix"
quietly cmake --install "$tree" --prefix "$work/installed"
mv "$work/installed" "$prefix"
mkdir "$work/sources"
cp -r "$ROOT/tests/consumers/." "$prefix/share/zanengine/." "$work/sources/"
libdir=$(dirname "$(find "$prefix" -name libzanengine.so)")
modules=$libdir/zanengine

say "no program or library is looked for in the working folder"
python3 "$ROOT/scripts/lib/check_runpaths.py" "$tree" "$prefix"

say "an adapter module, by find_package(ZANEngine)"
build_outside "$work/sources/adapter" module -DCMAKE_PREFIX_PATH="$prefix"
module=$(find "$work/module" -name 'libechoengineadapter.so')

say "the adapter template and the adapter kit, by find_package(ZANEngine COMPONENTS Conformance)"
build_outside "$work/sources/adapter-template" template -DCMAKE_PREFIX_PATH="$prefix"
quietly ctest --test-dir "$work/template" --output-on-failure

say "the steps of the adapter guide"
quietly python3 "$ROOT/scripts/lib/follow_guide.py" "$ROOT/docs/adapter-guide.md" "$prefix" \
    "$work/guide"

say "an application, by find_package(ZANEngine)"
build_outside "$work/sources/package" package -DCMAKE_PREFIX_PATH="$prefix"

say "an application, by pkg-config"
export PKG_CONFIG_PATH=$libdir/pkgconfig
read -ra flags <<<"$(pkg-config --cflags --libs zanengine)"
quietly g++ -std=c++17 -Wall -Wextra -Werror "$work/sources/consumer.cpp" -o "$work/consumer" \
    "${flags[@]}" -Wl,-rpath,"$libdir"

say "the module is found through ZAN_ADAPTER_PATH"
ZAN_ADAPTER_PATH=$(dirname "$module") "$work/package/consumer"
ZAN_ADAPTER_PATH=$(dirname "$module") "$work/consumer"
say "the kit's program, by URL"
ZAN_ADAPTER_PATH=$(dirname "$module") quietly "$prefix/bin/zan-conformance" echo:local \
    --abilities connections,sending,events,clock
say "the module is not found where it is not"
if "$work/consumer" 2>/dev/null; then
    fail "the consumer found a module that is not installed"
fi
say "the module is found in the folder of installed modules"
mkdir -p "$modules"
cp "$module" "$modules/"
"$work/package/consumer"

if [[ -f $modules/libembeddedengineadapter.so ]]; then
    say "the program of the README, with the installed embedded engine"
    quietly g++ -std=c++17 "$ROOT/examples/order/order.cpp" -o "$work/order" "${flags[@]}" \
        -Wl,-rpath,"$libdir"
    quietly "$work/order"
    say "the command-line client, its manual page and its completions"
    quietly "$prefix/bin/zan" --url embedded:demo doctor --logon
    for guide in man/man1/zan.1 bash-completion/completions/zan zsh/site-functions/_zan \
        fish/vendor_completions.d/zan.fish; do
        [[ -s $prefix/share/$guide ]] || fail "share/$guide is not installed"
    done
fi
for installed in "$modules"/*.so "$prefix"/bin/*; do
    [[ -e $installed ]] || continue
    ldd "$installed" | grep -q 'not found' && fail "$installed does not find what it needs"
done

say "the links of the installed documents"
python3 "$ROOT/scripts/lib/check_links.py" "$prefix/share/doc/zanengine"

say "as a subproject, which installs nothing of its own accord"
build_outside "$ROOT/tests/consumers/subproject" subproject
ZAN_ADAPTER_PATH=$(dirname "$module") "$work/subproject/consumer"
quietly cmake --install "$work/subproject" --prefix "$work/of-subproject"
[[ $(cd "$work/of-subproject" && find . -type f) == ./bin/consumer ]] ||
    fail "the subproject installed files of its own: $(find "$work/of-subproject" -type f)"
