# Shared by the tests of the package for Windows; source it, with the build folder and the folder of the packages. Each works in a
# folder and a Wine prefix of its own.
source "$(dirname "${BASH_SOURCE[0]}")/../../scripts/lib/common.sh"
build=$(cd "$1" && pwd)
packages=$(cd "$2" && pwd)
version=$(sed -n 's/.*set(CPACK_PACKAGE_VERSION "\(.*\)").*/\1/p' "$build/CPackConfig.cmake")
name=KinoraVeltrixCoupling-$version-windows-x64
shared=share/KinoraVeltrixCoupling

home=$(mktemp -d)
export KINORA_WINEPREFIX="$home/wine"
# shellcheck disable=SC2034 # the tests use them
drive="$KINORA_WINEPREFIX/drive_c"
# Wine would put a start menu into that of the machine.
export WINEDLLOVERRIDES=winemenubuilder.exe=d
trap '"$root/scripts/wine-prefix" stop; rm -rf "$home"' EXIT
scripts/wine-prefix start

# run PROGRAM.exe [ARGUMENT...]: output goes to a file, because a desktop that a program starts keeps a pipe open.
run() {
    timeout 120 "$root/scripts/wine-run" "$@" </dev/null >"$home/output.txt" 2>&1 || { cat "$home/output.txt"; fail "$1"; }
}

# refused STATUS PROGRAM.exe [ARGUMENT...]: it ends with this status, its output is in the file.
refused() {
    local expected=$1 status=0; shift
    timeout 120 "$root/scripts/wine-run" "$@" </dev/null >"$home/output.txt" 2>&1 || status=$?
    [ "$status" -eq "$expected" ] || { cat "$home/output.txt"; fail "$* ended with $status, not with $expected"; }
}

# says TEXT: the last program did.
says() { grep -qaF -- "$1" "$home/output.txt" || { cat "$home/output.txt"; fail "not said: $1"; }; }

# demo: demo.cmd of the package in the current folder runs, and its numbers are those of an independent closed form.
demo() {
    run cmd /c demo.cmd /nowait /nobrowser
    says 'All is well'
    PYTHONDONTWRITEBYTECODE=1 python3 $shared/examples/cube-magnets/compare.py demo-run/cube-magnets.reports/cube-magnets.coupling.csv
    [ "$(stat -c %s demo-run/cube-magnets.report.html)" -gt 100000 ] || fail "the report page is empty"
}

# files FOLDER: those in it, sorted.
files() { (cd "$1" && find . -type f | sed 's#^\./##' | LC_ALL=C sort); }
