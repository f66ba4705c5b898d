#!/bin/sh
# cases.sh BROKEN [--quick]: the kit comes across variants that are wrong in few cases only. With --quick, those that take
# all cases are left out.
set -u

broken=$1
depth=${2-}
output=$(mktemp)
errors=$(mktemp) # where sanitizers write, too, at any time
trap 'rm -f "$output" "$errors"' EXIT
failures=0

fail() {
    echo "FAILED: $*"
    cat "$output" "$errors"
    failures=$((failures + 1))
}

# finds FUNCTION FAULT KIND [OPTION...]: the kit finds the fault in the function, names its kind (a basic regular
# expression), and finds it again by the command that the report names.
finds() {
    function=$1
    fault=$2
    kind=$3
    shift 3
    "$broken" "$fault" --function "$function" "$@" >"$output" 2>"$errors"
    status=$?
    [ "$status" -eq 1 ] || fail "$fault: ended with $status"
    grep -q "^${function}_C_  *DIFFERS" "$output" || fail "$fault: no difference"
    grep -q "^  \($kind\)" "$output" || fail "$fault: expected '$kind'"
    again=$(sed -n 's/^  again: [^ ]* //p' "$output")
    # Word splitting is what the options are for.
    # shellcheck disable=SC2086
    "$broken" "$fault" $again >"$output" 2>"$errors"
    status=$?
    [ "$status" -eq 1 ] || fail "$fault: not found again by $again"
    grep -q "; 1 cases" "$output" || fail "$fault: more than one case with $again"
}

wrong="wrong byte in a destination: plane "
for width in 66 93 110 126; do
    finds KorBGRAToI420 "width=$width" "$wrong"
done
finds KorBGRAToI420 "50 by 8" "$wrong" --quick
finds KorBGRAToI420 "64 by 64" "$wrong" --quick
finds KorBGRAToI420 "wider than 4099" "$wrong" --quick
finds KorBGRAToI420 "higher than 512" "$wrong" --quick
finds KorBGRAToI420 "large and rare" "$wrong" --random 200 --seed 7
finds KorI420AlphaBlend "weight of 77" "$wrong" --quick
finds KorI420AlphaBlend "positions beyond 5" "$wrong" --quick
finds KorI420AlphaBlend "rows beyond 255" "$wrong" --quick
finds KorBGRAToI420General "matrix in u" "$wrong" --quick
finds KorBGRAToI420General "matrix in v" "$wrong" --quick
finds KorBGRAToI420General "matrix in the spare row" "$wrong" --quick
finds KorBGRAToI420General "coefficient of 16 bits" "$wrong" --quick
finds KorBGRAToI420General "matrix of no size" "crashed: SIGSEGV on touching coeffs\|ended" --quick
finds KorPlanarRotation "angle of 16 bits" "$wrong\|crashed: SIG\|ended" --quick
finds KorI444ToBGRA "noise from row 600" "$wrong" --quick
if [ -z "$depth" ]; then
    finds KorPlanarMirror "stack of a long row" "needs more stack than "
    finds KorBGRAToI420 "one colour" "$wrong"
    finds KorI444ToBGRA "one triple" "$wrong"
fi
# A touch far from the planes has a title of its own, and sanitizers end the program.
touch="wrong byte in a destination: \|crashed: SIG\|exited\|ended"
finds KorPlanarMirror "pitch of 16 bits" "$touch" --quick
if ! "$broken" none --quick | grep -q "not tried: pitches\|were not tried:"; then
    finds KorPlanarMirror "pitch of 32 bits" "$touch" --quick
    finds KorPlanarMirror "offset of 32 bits" "$touch" --quick
    finds KorPlanarMirror "source offset of 32 bits" "$touch" --quick
fi

"$broken" none --quick >"$output" 2>&1 || fail "none: ended with $?"
grep -q "6 same, 0 different, 32 not tried;" "$output" || fail "none: not the same"

if [ "$failures" -gt 0 ]; then
    echo "$failures failed"
    exit 1
fi
echo "all passed"
