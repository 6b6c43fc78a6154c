# setup_test.bash SETUP: what the scripts do about tools that are here, too old or missing. SETUP is
# scripts/setup.sh. Each case has a directory of its own for programs, and no others but the shell's.

setup=$1
work=$(mktemp -d) || exit 1
trap 'rm -rf "$work"' EXIT
bash=$(command -v bash) sed=$(command -v sed) dirname=$(command -v dirname)

# program NAME COMMANDS: a program of this case.
program()
{
    printf '#!%s\n%s\n' "$bash" "$2" > "$work/bin/$1"
    chmod +x "$work/bin/$1"
}

begin()
{
    rm -rf "${work:?}/bin"
    mkdir "$work/bin"
    ln -s "$bash" "$sed" "$dirname" "$work/bin"
    program id 'echo 0'
    program cmake 'echo "cmake version 3.25.1"'
    program ninja ''
    program c++ 'while read -r line; do [[ $line != *missing* ]] || exit 1; done'
}

failures=0 count=0
# expect STATUS TEXT COMMAND: the command, after setup.sh, ends like that and prints the text.
expect()
{
    local output status
    output=$(PATH=$work/bin "$bash" -c ". '$setup'; $3" 2>&1)
    status=$?
    ((++count))
    if [[ $status != "$1" || $output != "$2" ]]; then
        printf '%s: status %s instead of %s\n[%s]\ninstead of\n[%s]\n' "$3" "$status" "$1" "$output" "$2"
        ((++failures))
    fi
}

paste()
{
    printf '%s\n' 'Some tools are missing. On Debian and Ubuntu this installs them, as root:' \
        "    apt-get update && apt-get install -y $1" \
        "Elsewhere, install what your system has in place of these packages."
}

# All that is needed is here, and no package manager.
begin
expect 0 '' 'need "${build_packages[@]}"'

# So are the libraries.
expect 0 '' 'need "${json_packages[@]}" "${stat_packages[@]}" libgtest-dev libgmock-dev libbenchmark-dev'

# A version is compared as numbers.
for version in 3.25.0 3.100.2 4.0.3; do
    program cmake "echo 'cmake version $version'"
    expect 0 '' 'need cmake'
done
for version in 3.24.9 3.9.1 2.28.0; do
    program cmake "echo 'cmake version $version'"
    expect 1 "$(paste cmake)" 'need cmake'
done

begin
rm "$work/bin/ninja" "$work/bin/c++"
expect 1 "$(paste 'g++ ninja-build')" 'need "${build_packages[@]}"'

# A header or a Python module counts, wherever it is from; no package manager is asked for it.
begin
program python3 '[[ $* == "-c import jsonschema" ]]'
expect 0 '' 'need rapidjson-dev python3-jsonschema'
program c++ 'while read -r line; do [[ $line != "#include <rapidjson/writer.h>" ]] || exit 1; done'
expect 1 "$(paste rapidjson-dev)" 'need g++ rapidjson-dev libgtest-dev python3-jsonschema'
program python3 'exit 1'
expect 1 "$(paste 'rapidjson-dev python3-jsonschema')" 'need rapidjson-dev python3-jsonschema'
rm "$work/bin/python3"
expect 1 "$(paste 'rapidjson-dev python3-jsonschema')" 'need rapidjson-dev python3-jsonschema'

# A user who cannot become root gets the same message.
begin
rm "$work/bin/ninja"
program apt-get 'echo called'
program id 'echo 1000'
expect 1 "$(paste ninja-build)" 'need cmake ninja-build'

# Root has it installed.
begin
rm "$work/bin/ninja"
program apt-get "[[ \$1 == update ]] || { printf '#!$bash\n' > '$work/bin/ninja'; $(command -v chmod) +x '$work/bin/ninja'; }"
expect 0 'Installing ninja-build' 'need cmake ninja-build'

# What the system has is too old.
program cmake 'echo "cmake version 3.18.4"'
program apt-get ''
expect 1 'Installing cmake
Still missing, or too old: cmake
You need CMake 3.25 and g++ 12 or clang 14: Debian 12, Ubuntu 24.04, or later.' 'need cmake ninja-build'

# A program whose package would start a service is taken out of the package's file.
begin
ln -s "$(command -v mkdir)" "$(command -v mktemp)" "$(command -v rm)" "$(command -v tar)" "$(command -v chmod)" \
    "$(command -v mv)" "$(command -v ls)" "$work/bin"
mkdir -p "$work/package/usr/bin"
printf '#!%s\necho fetched\n' "$bash" > "$work/package/usr/bin/promtool"
printf 'not wanted\n' > "$work/package/usr/bin/prometheus"
tar -cf "$work/package.tar" -C "$work/package" .
program apt-get "[[ \$* == *'download prometheus' ]] && : > prometheus_1_all.deb"
program dpkg-deb "[[ \$* == '--fsys-tarfile '*/prometheus_1_all.deb ]] && exec $(command -v cat) '$work/package.tar'"
expect 0 'Fetching promtool
fetched
promtool' "tools=$work/tools; fetch prometheus promtool; promtool; ls '$work/tools'"
expect 0 'fetched' "tools=$work/tools; fetch prometheus promtool; promtool"

# Where that is not possible, the tests that need it are skipped.
rm -rf "$work/tools"
program apt-get 'exit 1'
expect 0 'Fetching promtool
promtool cannot be fetched' "tools=$work/tools; fetch prometheus promtool; ls '$work/tools'"
rm "$work/bin/apt-get"
expect 0 'Fetching promtool
promtool cannot be fetched' "tools=$work/tools; fetch prometheus promtool"

printf '%d cases, %d failures\n' "$count" "$failures"
((failures == 0))
