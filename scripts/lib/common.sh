# Shared by the scripts of this folder; source it.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
cd "$root"
export LC_ALL=C.UTF-8

say() { printf '\033[1m== %s\033[0m\n' "$*"; }
fail() { printf 'error: %s\n' "$*" >&2; exit 1; }

is_installed() { dpkg-query -W -f '${Status}' "$1" 2>/dev/null | grep -q 'install ok installed'; }

# need PACKAGE...: installs the Debian packages that are missing.
need() {
    local missing=() package
    for package in "$@"; do
        is_installed "$package" || missing+=("$package")
    done
    [ ${#missing[@]} -eq 0 ] && return
    command -v apt-get >/dev/null || fail "these packages are missing and apt-get is not here to install them: ${missing[*]}"
    local sudo=()
    if [ "$(id -u)" -ne 0 ]; then
        command -v sudo >/dev/null || fail "root or sudo is needed to install: ${missing[*]}"
        sudo=(sudo)
    fi
    say "Installing ${missing[*]}"
    local log; log=$(mktemp)
    { "${sudo[@]}" apt-get update && "${sudo[@]}" env DEBIAN_FRONTEND=noninteractive \
        apt-get install -y --no-install-recommends "${missing[@]}"; } >"$log" 2>&1 \
        || { tail -n 20 "$log" >&2; rm -f "$log"; fail "could not install: ${missing[*]}"; }
    rm -f "$log"
}

# The packages that the build and its tests use; docs/dependencies.md gives the reasons.
need_build_tools() {
    need g++ g++-mingw-w64-x86-64-posix wine wine64 cmake ninja-build ccache googletest nlohmann-json3-dev libcli11-dev \
         libfmt-dev libtinyobjloader-dev libeigen3-dev libvalijson-dev libstb-dev bzip2 xz-utils python3 git
    need_sources zlib pugixml
    need_node
}

# need_headers PACKAGE...: unpacks in build/headers what is not installed, for cmake/ThirdParty.cmake. Of packages that consist of
# headers: libvalijson-dev would bring 200 others along, for uses of it that are not ours.
need_headers() {
    local missing=() package folder=build/headers
    for package in "$@"; do
        is_installed "$package" || [ -e "$folder/usr/share/doc/$package" ] || missing+=("$package")
    done
    [ ${#missing[@]} -eq 0 ] && return
    say "Unpacking ${missing[*]}"
    local archives; archives=$(mktemp -d)
    (cd "$archives" && apt-get download "${missing[@]}") >"$archives/log" 2>&1 \
        || { tail -n 20 "$archives/log" >&2; rm -rf "$archives"; fail "could not download: ${missing[*]}"; }
    mkdir -p "$folder"
    for package in "$archives"/*.deb; do
        dpkg-deb --extract "$package" "$folder"
    done
    rm -rf "$archives"
}

# need_sources PACKAGE...: puts the sources of Debian's packages in build/sources/PACKAGE: of those that Debian has compiled for
# this machine only. Where the archive has no sources, what needs them is not built.
need_sources() {
    local missing=() package folder=build/sources
    for package in "$@"; do
        [ -e "$folder/$package" ] || missing+=("$package")
    done
    [ ${#missing[@]} -eq 0 ] && return
    say "Fetching the sources of ${missing[*]}"
    local work; work=$(mktemp -d)
    if ! (cd "$work" && fetch_sources "${missing[@]}") >"$work/log" 2>&1; then
        tail -n 5 "$work/log" >&2
        printf 'warning: the archive gives no sources of %s: built without kinora-fmu\n' "${missing[*]}" >&2
    else
        for package in "${missing[@]}"; do
            mkdir -p "$folder/$package.part"
            tar --extract --file "$work/$package"_*.orig.tar.* --directory "$folder/$package.part" --strip-components 1
            mv "$folder/$package.part" "$folder/$package"
        done
        touch cmake/ThirdParty.cmake # what is configured already is so again
    fi
    rm -rf "$work"
}

# fetch_sources PACKAGE...: into the current folder, from the archives that the machine installs from, with lists of its own.
fetch_sources() {
    mkdir -p parts lists/partial
    local file
    for file in /etc/apt/sources.list /etc/apt/sources.list.d/*; do
        case $file in
        *.sources) sed 's/^Types:.*/Types: deb-src/' "$file" >"parts/${file##*/}" ;;
        *.list) [ -e "$file" ] && sed -n 's/^deb /deb-src /p' "$file" >"parts/${file##*/}" ;;
        esac
    done
    local own=(-o Dir::Etc::sourcelist=/dev/null -o "Dir::Etc::sourceparts=$PWD/parts" -o "Dir::State::lists=$PWD/lists")
    apt-get "${own[@]}" update && apt-get "${own[@]}" source --download-only "$@"
}

# What the preset native-release uses of it, but for the report page: no cross compiler, no Wine.
need_native_tools() {
    need g++ cmake ninja-build googletest python3
    need_headers nlohmann-json3-dev libcli11-dev libfmt-dev libtinyobjloader-dev libeigen3-dev libvalijson-dev
}

# Any Node.js from 18 on will do.
has_node() { command -v node >/dev/null && command -v npm >/dev/null; }
need_node() { has_node || need nodejs npm; }

# The second compiler, for the presets mingw-clang and native.
need_clang() { need clang libclang-rt-14-dev lld; }

# What the tests of the Python package and of its examples import.
need_python_tools() { need python3-pytest python3-numpy python3-scipy python3-matplotlib python3-pycparser; }

# What kinora-study has its runs done by, and what its tests import and bring a cluster up with.
need_study_tools() { need snakemake python3-pytest python3-jsonschema python3-numpy slurm-wlm munge; }

# What makes HTML of the documents (scripts/lib/html_docs.py).
need_docs_tools() { need python3-markdown; }

# What makes the package for Windows: its installer, the import library for MSVC, the documents.
need_package_tools() { need nsis lld; need_docs_tools; }

# What scripts/check looks with.
need_check_tools() { need clang-format clang-tidy cppcheck codespell shellcheck mypy python3-numpy; }

# The compiler cache. It looks at the headers that a source used, and so costs nothing where it has no answer.
use_ccache() {
    command -v ccache >/dev/null || return 0
    export CMAKE_CXX_COMPILER_LAUNCHER=ccache CCACHE_DEPEND=1 CCACHE_SLOPPINESS=pch_defines,time_macros
}

# build PRESET [TARGET...]: configures when needed, then builds.
build() {
    local preset=$1; shift
    local arguments=()
    [ $# -eq 0 ] || arguments=(--target "$@")
    use_ccache
    [ -f "build/$preset/build.ninja" ] || cmake --preset "$preset" >/dev/null
    cmake --build --preset "$preset" "${arguments[@]}"
}
