# shellcheck shell=bash
# What the other shell scripts begin with: --help prints the comment at their head; arguments are
# refused unless they match the pattern $accepts, or all if it is not set; the working folder is the
# root.
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
