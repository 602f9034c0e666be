#!/usr/bin/env bash
# check_packages.sh <build tree>: makes the Debian packages, installs them into a fresh folder by dpkg,
# and uses them there: as a developer, an operator and a reader would.
set -euo pipefail
source "$(dirname "$0")/common.sh"
tree=$(cd "$1" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
root=$work/root
names=(libzanengine1 libzanengine-dev zanengine-transports zanengine-tools zanengine-doc)

quietly() {
    "$@" >"$work/log" 2>&1 || {
        cat "$work/log" >&2
        fail "failed: $*"
    }
}

say "packing"
rm -rf "$tree/packages"
(cd "$tree" && quietly cpack)
packages=()
for name in "${names[@]}"; do
    found=("$tree/packages/$name"_*.deb)
    [[ -f ${found[0]} && ${#found[@]} == 1 ]] || fail "there is no package $name, or more than one"
    packages+=("${found[0]}")
done
(($(find "$tree/packages" -name '*.deb' | wc -l) == ${#names[@]})) ||
    fail "there are other packages too: $(ls "$tree/packages")"

say "no file is in two packages"
twice=$(for package in "${packages[@]}"; do dpkg-deb --fsys-tarfile "$package" | tar -t; done |
    grep -v '/$' | sort | uniq -d)
[[ -z $twice ]] || fail "in two packages: $twice"

say "what they depend on is to be had"
if ((EUID == 0)); then
    quietly apt-get install --simulate -q -y --no-install-recommends "${packages[@]}"
fi

say "installing into a fresh folder"
mkdir -p "$root/var/lib/dpkg"/{info,updates,triggers} "$root/var/log"
touch "$root/var/lib/dpkg"/{status,available}
# The packages of Debian's that they depend on are those of this machine.
quietly dpkg --root="$root" --force-depends --force-script-chrootless \
    --force-not-root --log="$work/dpkg.log" --install "${packages[@]}"
library=$(find "$root/usr/lib" -name 'libzanengine.so.1')
[[ -n $library ]] || fail "libzanengine.so.1 is in none of the packages"
libdir=$(dirname "$library")
export LD_LIBRARY_PATH=$libdir

say "as a developer: pkg-config and CMake"
export PKG_CONFIG_PATH=$libdir/pkgconfig
read -ra flags <<<"$(pkg-config --cflags --libs zanengine)"
quietly g++ -std=c++17 "$root/usr/share/doc/zanengine/examples/order/order.cpp" \
    -o "$work/order" "${flags[@]}"
cp -r "$ROOT/packaging/conan/test_package" "$work/consumer"
quietly cmake -S "$work/consumer" -B "$work/consumer/build" -G Ninja -DCMAKE_PREFIX_PATH="$root/usr"
quietly cmake --build "$work/consumer/build"
quietly "$work/consumer/build/state"

say "as an application: an order through the installed embedded engine"
quietly "$work/order"

say "as an operator: the programs"
quietly "$root/usr/bin/zan" --url embedded:demo connections
grep -q DEMO "$work/log" || fail "zan does not see the connection DEMO: $(cat "$work/log")"

say "as a reader: the guides"
for page in README.md docs/architecture.md examples/order/order.cpp; do
    [[ -s $root/usr/share/doc/zanengine/$page ]] || fail "zanengine-doc has no $page"
done

say "and they are gone again"
quietly dpkg --root="$root" --force-depends --force-script-chrootless \
    --force-not-root --log="$work/dpkg.log" --purge "${names[@]}"
left=$(find "$root/usr" -type f 2>/dev/null || true)
[[ -z $left ]] || fail "left behind: $left"
say "packages: $(cd "$tree/packages" && du -h --apparent-size -- *.deb | tr '\n\t' '  ')"
