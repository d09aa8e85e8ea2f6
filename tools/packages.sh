# Sourced by the scripts at the top of the tree: puts the Debian packages in place that they need.

build_packages="g++ cmake ninja-build qt6-base-dev libxcb1-dev libfontconfig-dev libcurl4-openssl-dev"
run_packages="7zip python3 openssl ca-certificates xdg-utils qt6-translations-l10n qt6-wayland"
test_packages="libgtest-dev libssl-dev qt6-svg-dev xvfb xauth xdotool openbox weston at-spi2-core dbus sudo python3-jsonschema man-db groff-base zsh desktop-file-utils librsvg2-bin"
test_packages="$test_packages clang-14 libgnustep-gui-dev gnustep-back0.29-cairo libobjc-12-dev libblocksruntime-dev"
package_packages="dpkg-dev file git xz-utils"
check_packages="clang clang-format-14 clang-tidy-14 libclang-rt-14-dev mmdebstrap lintian"

# Installs the packages that are missing, with sudo where needed. Where that cannot be done it says what is needed and
# goes on, as all may be there in another form.
install_packages() {
    if ! command -v apt-get >/dev/null || ! command -v dpkg-query >/dev/null; then
        echo "No apt here. Needed, by their Debian names: $*" >&2
        return 0
    fi
    local missing=() package
    for package in "$@"; do
        dpkg-query -W -f '${Status}' "$package" 2>/dev/null | grep -q ' installed$' || missing+=("$package")
    done
    [ ${#missing[@]} -gt 0 ] || return 0
    echo "Installing missing packages: ${missing[*]}"
    local elevate=()
    [ "$(id -u)" = 0 ] || elevate=(sudo)
    if ! "${elevate[@]}" apt-get update -qq || ! "${elevate[@]}" env DEBIAN_FRONTEND=noninteractive \
        apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null; then
        echo "Could not install them; going on without. Please install as administrator: ${missing[*]}" >&2
    fi
}
