# shellcheck shell=bash
# Shared by the scripts of this folder; source it.
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
export KINORA_VELTRIX_VTDK_VERSION=Simulator

# start PROGRAM [ARGUMENT...]: becomes a built program, under Wine where that is what it was built for.
start() {
    case $1 in
    *.exe) exec "$root/scripts/wine-run" "$@" ;;
    *) exec "$@" ;;
    esac
}
