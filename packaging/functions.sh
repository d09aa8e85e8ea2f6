# Sourced by ./package: the steps of packing.

packages=build/packages
work=build/packaging

# Every date in a package is the one of the last commit; in a tree without history, of the newest release.
set_source_date() {
    SOURCE_DATE_EPOCH=${SOURCE_DATE_EPOCH:-$(git log -1 --format=%ct 2>/dev/null ||
        date -u -d "$(sed -n 's/^## \[.*\] - //p' CHANGELOG.md | head -n 1)" +%s)}
    export SOURCE_DATE_EPOCH
    export TZ=UTC LC_ALL=C.UTF-8
    umask 022
}

pack_for_linux() {
    local bundle version name
    bundle=build/release/$(sed -n 's/^CFBundleName:[A-Z]*=//p' build/release/CMakeCache.txt).app
    version=$(python3 packaging/information.py "$bundle" CFBundleShortVersionString)
    name=tolvix-installer-$version-linux-$(uname -m)
    rm -rf "$work" "$packages"
    mkdir -p "$work" "$packages"

    cpack --config build/release/CPackConfig.cmake -B "$work/debian" >"$work/cpack.log" 2>&1 ||
        { cat "$work/cpack.log" >&2; return 1; }
    mv "$work"/debian/*.deb "$packages/"

    cmake --install build/release --strip --prefix "$PWD/$work/$name" >"$work/install.log"
    tar --create --directory "$work" --sort=name --mtime="@$SOURCE_DATE_EPOCH" --owner=0 --group=0 --numeric-owner \
        --format=gnu "$name" | xz --threads=1 -9e >"$packages/$name.tar.xz"

    check_for_paths "$work/$name"
    write_bill "$version" "$work/$name/lib" "$packages"/*.deb "$packages"/*.tar.xz
    write_checksums
}

# A path of the machine that built them has no business in a package.
check_for_paths() {
    if grep -rlF -- "$PWD" "$1"; then
        echo "package: these files hold the path of the source tree" >&2
        return 1
    fi
}

write_bill() {
    local version=$1 folder=$2 programs=() program
    shift 2
    while IFS= read -r -d '' program; do
        programs+=(--program "$program")
    done < <(find "$folder" -type f -perm -u+x -print0 | sort -z)
    python3 packaging/sbom.py --version "$version" "${programs[@]}" --runs 7zip --runs xdg-utils --runs ca-certificates \
        --tool g++ --tool cmake --tool qt6-base-dev-tools "$@" >"$packages/tolvix-installer-$version.spdx.json"
}

pack_for_macos() {
    mkdir -p "$packages"
    python3 packaging/macos_image.py "$1" "$packages"
    write_checksums
}

write_checksums() (
    cd "$packages"
    shopt -s nullglob
    set -- *.deb *.tar.xz *.json *.dmg
    # A Mac has the other command.
    if command -v sha256sum >/dev/null; then sha256sum -- "$@"; else shasum -a 256 -- "$@"; fi >SHA256SUMS
    wc -c -- "$@"
)
