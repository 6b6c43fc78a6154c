# Sourced by the other scripts: goes to the top of the repository and sees to the packages.

cd "$(dirname "${BASH_SOURCE[0]}")/.." || exit 1

# need PACKAGE...: installs what is missing of these Debian packages, or says what to install.
need() {
    local missing=() package
    for package in "$@"; do
        dpkg-query -W -f '${Status}' "$package" 2> /dev/null | grep -q 'ok installed' ||
            missing+=("$package")
    done
    [ ${#missing[@]} -eq 0 ] && return
    local as_root=()
    if [ "$(id -u)" -ne 0 ]; then
        as_root=(sudo)
    fi
    if ! command -v apt-get > /dev/null || { [ ${#as_root[@]} -gt 0 ] && ! sudo -n true 2> /dev/null; }; then
        echo "Please install these packages first: ${missing[*]}" >&2
        exit 1
    fi
    echo "Installing ${missing[*]}"
    "${as_root[@]}" apt-get update -qq &&
        DEBIAN_FRONTEND=noninteractive "${as_root[@]}" apt-get install -y -qq "${missing[@]}" > /dev/null ||
        { echo "Could not install: ${missing[*]}" >&2; exit 1; }
}

# build PRESET [TARGET...]: configures and builds, quietly unless it fails.
build() {
    local preset=$1 log
    shift
    log=$(mktemp)
    if ! { cmake --preset "$preset" && cmake --build --preset "$preset" ${1:+--target "$@"}; } > "$log" 2>&1; then
        cat "$log" >&2
        rm -f "$log"
        exit 1
    fi
    grep -A 5 'warning:' "$log" >&2
    rm -f "$log"
}

build_packages=(cmake g++ ninja-build)
test_packages=("${build_packages[@]}" libgtest-dev libgmock-dev)
document_packages=(fish groff mandoc zsh)  # for the tests of manual pages and completions
