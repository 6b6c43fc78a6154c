# install_test.bash CMAKE SOURCE COMPILER: where a build would install what the shells look for, how it
# would link the tool, and what its package would say of that. Configures some builds; compiles nothing of
# the tool.

cmake=$1 source=$2 compiler=$3
work=$(mktemp -d) || exit 1
trap 'rm -rf "$work"' EXIT

failures=0
# has TEXT FILE, has_not TEXT FILE: of the last build that was configured.
has()
{
    grep -qF -- "$1" "$work/build/$2" || { printf '%s has no [%s]\n' "$2" "$1"; ((++failures)); }
}

has_not()
{
    ! grep -qF -- "$1" "$work/build/$2" || { printf '%s has [%s]\n' "$2" "$1"; ((++failures)); }
}

configure()
{
    rm -rf "$work/build"
    "$cmake" -S "$source" -B "$work/build" -G "Unix Makefiles" -DCMAKE_CXX_COMPILER="$compiler" -DBUILD_TESTING=OFF \
        -DQUASK_BUILD_DEMO=OFF "$@" > "$work/log" 2>&1 || { cat "$work/log"; exit 1; }
}

link=src/cli/CMakeFiles/quask.dir/link.txt

configure -DQUASK_LINK_DYNAMICALLY=ON
has_not '-static' "$link"
has '/share/bash-completion/completions"' cmake_install.cmake
has '/share/zsh/site-functions"' cmake_install.cmake
has '/share/fish/vendor_completions.d"' cmake_install.cmake
has_not CONTRIBUTING.md cmake_install.cmake
has_not Static-Built-Using CPackConfig.cmake

configure -DQUASK_DEBIAN_LAYOUT=ON -DCMAKE_INSTALL_PREFIX=/usr -DQUASK_HAS_STATIC_PIE=ON \
    -DCMAKE_SYSTEM_NAME=Linux -DCMAKE_SYSTEM_PROCESSOR=aarch64
has '-static-pie' "$link"
has '/share/zsh/vendor-completions"' cmake_install.cmake
has 'CPACK_DEBIAN_PACKAGE_ARCHITECTURE "arm64"' CPackConfig.cmake

# No static C library, and no static library at all.
configure -DQUASK_HAS_STATIC_PIE=OFF -DQUASK_HAS_STATIC_LIBSTDCXX=ON
has '-static-libstdc++' "$link"
has_not '-static-pie' "$link"
configure -DQUASK_HAS_STATIC_PIE=OFF -DQUASK_HAS_STATIC_LIBSTDCXX=OFF
has_not '-static' "$link"
grep -q 'the tool is linked dynamically' "$work/log" || { echo 'nothing says so'; ((++failures)); }

printf '%d failures\n' "$failures"
((failures == 0))
