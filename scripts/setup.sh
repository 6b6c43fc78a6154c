# Sourced by the other scripts: goes to the top of the repository and makes sure of the tools.

cd "$(dirname "${BASH_SOURCE[0]}")/.." || exit 1

# compiles COMPILER LINE...: whether the compiler takes these lines of C++20.
compiles() {
    local compiler=$1
    shift
    printf '%s\n' "$@" | "$compiler" -std=c++20 -fsyntax-only -x c++ - > /dev/null 2>&1
}

# is_here PACKAGE: whether there is what the scripts use of this Debian package, wherever it is from.
is_here() {
    local version
    case $1 in
        cmake)
            version=$(cmake --version 2> /dev/null | sed -n 's/^cmake version \([0-9]*\)\.\([0-9]*\).*/\1 \2/p')
            [ -n "$version" ] && [ "${version% *}" -gt 3 ] || [ "${version#3 }" -ge 25 ] 2> /dev/null ;;
        g++)
            compiles "${CXX:-c++}" '#if defined(__clang__) ? __clang_major__ < 14 : __GNUC__ < 12' '#error' '#endif' \
                '#include <version>' ;;
        libgtest-dev) compiles "${CXX:-c++}" '#include <gtest/gtest.h>' ;;
        libgmock-dev) compiles "${CXX:-c++}" '#include <gmock/gmock.h>' ;;
        rapidjson-dev) compiles "${CXX:-c++}" '#include <rapidjson/writer.h>' ;;
        python3-jsonschema) python3 -c 'import jsonschema' 2> /dev/null ;;
        libbenchmark-dev) compiles "${CXX:-c++}" '#include <benchmark/benchmark.h>' ;;
        libsmartcols-dev) compiles "${CXX:-c++}" '#include <libsmartcols/libsmartcols.h>' ;;
        googletest) [ -d /usr/src/googletest ] ;;
        ninja-build) command -v ninja > /dev/null ;;
        g++-aarch64-linux-gnu) command -v aarch64-linux-gnu-g++ > /dev/null ;;
        qemu-user) command -v qemu-aarch64 > /dev/null ;;
        clang-14) command -v clang++-14 > /dev/null ;;
        llvm-14) command -v llvm-symbolizer-14 > /dev/null ;;
        dpkg-dev) command -v dpkg-shlibdeps > /dev/null ;;
        e2fsprogs) PATH=$PATH:/usr/sbin:/sbin command -v mke2fs > /dev/null ;;
        util-linux) command -v unshare > /dev/null ;;
        *) command -v "$1" > /dev/null ;;
    esac
}

# Sets `missing` to those of these packages of which something is missing.
look_for() {
    local package
    missing=()
    for package in "$@"; do
        is_here "$package" || missing+=("$package")
    done
}

# Sets `as_root` to what comes before a command that takes root. False where nobody can become root.
become_root() {
    as_root=()
    if [ "$(id -u)" -ne 0 ]; then
        sudo -n true 2> /dev/null || return
        as_root=(sudo)
    fi
}

# install PACKAGE...: with apt-get, as root. False where that is not possible.
install() {
    local as_root
    command -v apt-get > /dev/null && become_root || return
    echo "Installing $*"
    "${as_root[@]}" apt-get update -qq &&
        DEBIAN_FRONTEND=noninteractive "${as_root[@]}" apt-get install -y -qq "$@" > /dev/null
}

# need PACKAGE...: installs what is missing of these Debian packages, or says what to install.
need() {
    local missing
    look_for "$@"
    [ ${#missing[@]} -gt 0 ] || return 0
    if ! install "${missing[@]}"; then
        echo "Some tools are missing. On Debian and Ubuntu this installs them, as root:" >&2
        echo "    apt-get update && apt-get install -y ${missing[*]}" >&2
        echo "Elsewhere, install what your system has in place of these packages." >&2
        exit 1
    fi
    look_for "$@"
    if [ ${#missing[@]} -gt 0 ]; then
        echo "Still missing, or too old: ${missing[*]}" >&2
        echo "You need CMake 3.25 and g++ 12 or clang 14: Debian 12, Ubuntu 24.04, or later." >&2
        exit 1
    fi
}

# download PACKAGE: the package's file, into this directory.
download() {
    local as_root
    apt-get -qq -o APT::Sandbox::User=root download "$1" 2> /dev/null ||
        { become_root && "${as_root[@]}" apt-get update -qq && apt-get -qq -o APT::Sandbox::User=root download "$1"; }
}

# fetch PACKAGE PROGRAM: puts this program of a Debian package into `tools`, and that into PATH, without
# installing the package, which would start a service. Where that is not possible, the tests that need the
# program are skipped, and CTest says so.
fetch() {
    local package=$1 program=$2 work
    mkdir -p "$tools"
    [[ :$PATH: == *":$tools:"* ]] || PATH=$PATH:$tools
    ! command -v "$program" > /dev/null || return 0
    echo "Fetching $program"
    work=$(mktemp -d) || return 0
    if (cd "$work" && download "$package") > /dev/null 2>&1 &&
        dpkg-deb --fsys-tarfile "$work"/*.deb | tar -xO "./usr/bin/$program" > "$work/program" && [ -s "$work/program" ]; then
        chmod +x "$work/program"
        mv "$work/program" "$tools/$program"
    else
        echo "$program cannot be fetched"
    fi
    rm -rf "$work"
}

# build PRESET [TARGET...]: configures and builds, quietly unless it fails. A second call for the same
# preset at the same time waits for the first one.
build() {
    local preset=$1 output lock
    shift
    if ! mkdir -p "build/$preset" || ! [ -w "build/$preset" ]; then
        echo "build/$preset cannot be written by $(id -un); remove it first, or give it to this user" >&2
        exit 1
    fi
    exec {lock}> "build/$preset/.lock" || exit 1
    ! command -v flock > /dev/null || flock "$lock"
    [ -f "build/$preset/build.ninja" ] || echo "Building in build/$preset. The first time takes a minute or more."
    if ! output=$({ cmake --preset "$preset" && cmake --build --preset "$preset" ${1:+--target "$@"}; } 2>&1); then
        printf '%s\n' "$output" >&2
        exit 1
    fi
    exec {lock}>&-
    printf '%s\n' "$output" | grep -A 5 'warning:' >&2
    return 0
}

build_packages=(cmake g++ ninja-build)
json_packages=(rapidjson-dev)  # for quask-json
stat_packages=(libsmartcols-dev)  # for quask-stat, with those of quask-json
test_packages=("${build_packages[@]}" "${json_packages[@]}" "${stat_packages[@]}" jq libgtest-dev libgmock-dev python3-jsonschema)
tools=$PWD/build/tools  # see fetch
document_packages=(fish groff mandoc zsh)  # for the tests of manual pages and completions
