# shellcheck shell=bash
# How the other shell scripts begin: --help prints the comment at their head; arguments that do not
# match the pattern $accepts are refused (any, if it is not set); the working folder is the root.
set -euo pipefail
refuse() {
    echo "${0##*/}: cannot take \"$*\"; see --help" >&2
    exit 2
}
shopt -s extglob
[ "$*" != --help ] || { sed -n '2,/^[^#]/s/^# \{0,1\}//p' "$0" && exit; }
# shellcheck disable=SC2053
[[ $* == ${accepts:-} ]] || refuse "$@"
CDPATH='' cd "$(dirname "$0")/.."
