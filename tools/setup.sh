# Sourced by run, test, package and .ci/run, from the root of the checkout: installs what is missing and builds the release tree.

say() { printf 'quillmate: %s\n' "$*"; }
fail() {
    printf 'quillmate: %s\n' "$*" >&2
    exit 1
}

# What building and running takes.
base_packages=(
    cmake g++ ninja-build pkg-config
    qt6-base-dev qt6-declarative-dev qt6-declarative-dev-tools qt6-svg-dev qt6-qpa-plugins
    qml6-module-qtquick qml6-module-qtquick-controls qml6-module-qtquick-layouts qml6-module-qtquick-templates
    qml6-module-qtquick-window qml6-module-qtqml qml6-module-qtqml-models qml6-module-qtqml-workerscript
    libsimdjson-dev nlohmann-json3-dev libsqlite3-dev libgmime-3.0-dev libmicrohttpd-dev libgnutls28-dev libssl-dev zlib1g-dev
    libxcb1-dev openssl xdg-utils
)
# What the tests take beside that.
test_packages=(
    xvfb fonts-dejavu-core bc
    at-spi2-core dbus python3 python3-gi gir1.2-atspi-2.0 xclip xdotool
    chromium chromium-driver python3-selenium
    thunderbird dovecot-imapd nodejs openbox wmctrl x11-utils procps
)
# What making the packages takes beside that.
package_packages=(dpkg-dev fakeroot file gzip binutils)
# What the test of the packages takes beside that.
package_test_packages=(
    lintian debootstrap desktop-file-utils appstream mandoc groff man-db bash-completion python3 util-linux
)
# What the checks of the sources take beside that.
check_packages=(clang-format clang-tidy git)

# install_packages PACKAGE…: nothing, and quickly, when all of them are there.
install_packages() {
    command -v dpkg-query >/dev/null || fail "this is not a Debian system: install what tools/setup.sh lists by hand"
    local missing=() package
    for package in "$@"; do
        [ "$(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null)" = installed ] || missing+=("$package")
    done
    [ ${#missing[@]} -eq 0 ] && return
    say "installing ${#missing[@]} packages from Debian: ${missing[*]}"
    local as_root=()
    if [ "$(id -u)" -ne 0 ]; then
        command -v sudo >/dev/null || fail "installing packages takes root: run as root, or install sudo, or install by hand: ${missing[*]}"
        as_root=(sudo)
    fi
    "${as_root[@]}" apt-get update -qq || fail "apt-get update failed: look at the network and at the package sources"
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null ||
        fail "apt-get could not install: ${missing[*]}"
}

# configure PRESET: once; afterwards the build itself configures again when it has to.
configure() { configure_tree "$1" "build/$1"; }

# configure_tree PRESET TREE [ARG…]: likewise, into a tree of another name and with further arguments for CMake.
configure_tree() {
    local preset=$1 tree=$2 log="$2.configure.log"
    shift 2
    [ -f "$tree/build.ninja" ] && return
    say "configuring $tree"
    mkdir -p build
    cmake --preset "$preset" -B "$tree" "$@" >"$log" 2>&1 || {
        tail -n 30 "$log" >&2
        fail "the configuration failed; the whole of it is in $log"
    }
}

# build PRESET [TARGET…]
build() {
    local preset=$1
    shift
    build_tree "build/$preset" "$@"
}

# build_tree TREE [TARGET…]
build_tree() {
    local tree=$1 log="$1.build.log" errors
    shift
    say "building $tree"
    cmake --build "$tree" ${1:+--target "$@"} >"$log" 2>&1 || {
        errors=$(grep -iE -A 5 'error|FAILED' "$log") || errors=$(tail -n 20 "$log")
        printf '%s\n' "${errors:0:6000}" >&2
        fail "the build failed; the whole of it is in $log"
    }
}
