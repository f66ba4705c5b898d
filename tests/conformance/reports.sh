#!/bin/sh
# reports.sh BROKEN EXAMPLE: what the kit says of variants that are wrong in one way each, and of one that is right.
set -u

broken=$1
example=$2
directory=$(mktemp -d)
trap 'rm -rf "$directory"' EXIT
cd "$directory" || exit 1
failures=0

fail() {
    echo "FAILED: $*"
    failures=$((failures + 1))
}

# ends STATUS PROGRAM ARGUMENTS...: how a program ends; what it says goes to stdout.txt and stderr.txt.
ends() {
    expected=$1
    shift
    "$@" >stdout.txt 2>stderr.txt
    status=$?
    [ "$status" -eq "$expected" ] || fail "$* ended with $status, expected $expected: $(cat stdout.txt stderr.txt)"
}

says() {
    grep -qF -- "$1" "${2-stdout.txt}" || fail "expected '$1' in: $(cat "${2-stdout.txt}")"
}

# finds CRIME FUNCTION TITLE: the crime is found in the function, told in these words, and found again by the command
# that the report names.
finds() {
    ends 1 "$broken" "$1" --junit junit.xml
    says "$2 "
    grep -q "^$2  *DIFFERS" stdout.txt || fail "$1 was not found in $2: $(cat stdout.txt)"
    says "  $3"
    says "1 same, 1 different, 36 not tried;"
    says "  call: $2("
    says "<failure message=\"$3" junit.xml
    cp stdout.txt first.txt
    # The program's own first argument is no option of the kit.
    again=$(sed -n 's/^  again: [^ ]* //p' first.txt)
    # Word splitting is what the options are for.
    # shellcheck disable=SC2086
    ends 1 "$broken" "$1" $again
    says "  $3"
    says "0 same, 1 different, 0 not tried; 1 cases"
    sed -n '/^  call:/,/^  case:/p' first.txt >wanted.txt
    sed -n '/^  call:/,/^  case:/p' stdout.txt >found.txt
    cmp wanted.txt found.txt || fail "$1 was not found again in the same call"
}

finds sample KorPlanarMirror_C_ "wrong byte in a destination: plane dst, row 1, column 4: expected "
finds source KorPlanarMirror_C_ "changed a source: plane src, row 0, column 2: expected "
finds draw KorI420ToBGRA_C_ "drew other random bytes: expected 0 draws, found 1 draw (bytes: 1)"
finds behind KorPlanarMirror_C_ "crashed: SIGSEGV on touching plane dst, 1 byte behind the plane"
finds read KorPlanarMirror_C_ "crashed: SIGSEGV on touching plane src, 1 byte behind the plane"
finds empty KorI420ToBGRA_C_ "crashed: SIGSEGV on touching plane x, which is empty"
finds abroad KorPlanarMirror_C_ "crashed: SIGSEGV at an address far from all planes"
finds trap KorPlanarMirror_C_ "crashed: SIGTRAP"
if [ "${KOR_CONFORMANCE_POISONS-0}" -eq 0 ]; then
    # The sanitizers end the program at the touch itself.
    finds null KorI420ToBGRA_C_ "crashed: SIGSEGV at a null pointer or near it"
    finds padding KorPlanarMirror_C_ "wrote outside of a plane: plane dst, row 1, column 19 (padding): expected "
    finds before KorPlanarMirror_C_ "wrote outside of a plane: plane dst, 1 byte before the plane: expected "
fi

# The picture of the difference, and the right number of differing bytes.
ends 1 "$broken" sample --function KorPlanarMirror
grep -q '^ *row 1 expected  ' stdout.txt || fail "no expected row: $(cat stdout.txt)"
[ "$(grep -c '^ *found .*\[..\]' stdout.txt)" -eq 1 ] || fail "no found row: $(cat stdout.txt)"

# Nothing to find.
ends 0 "$broken" none --quick --junit junit.xml --seed 7
says "broken <by \"design\">: 2 same, 0 different, 36 not tried;"
says ", seed 7"
says 'name="broken &lt;by &quot;design&quot;&gt;" tests="38" failures="0" errors="0" skipped="36"' junit.xml
says '<property name="seed" value="7"/>' junit.xml
[ "$(grep -c '<testcase ' junit.xml)" -eq 38 ] || fail "not 38 test cases: $(cat junit.xml)"
if command -v xmllint >/dev/null; then
    xmllint --noout junit.xml || fail "the report is no XML"
fi
ends 0 "$example" --seed random
ends 0 "$example" --function KorPlanarMirror_C_ --function KorPlanarMirror

# A function without the case that is asked for is not tried, and not called the same.
ends 0 "$broken" none --quick --case 4000 --junit junit.xml
grep -q '^KorPlanarMirror_C_  *no such case$' stdout.txt || fail "KorPlanarMirror_C_ was tried: $(cat stdout.txt)"
says "1 same, 0 different, 37 not tried; 1 cases"
says 'failures="0" errors="0" skipped="37"' junit.xml
[ "$(grep -c '<skipped message="no such case"/>' junit.xml)" -eq 1 ] || fail "not one without the case: $(cat junit.xml)"
[ "$(grep -c '<skipped message="not in the table"/>' junit.xml)" -eq 36 ] || fail "not 36 missing: $(cat junit.xml)"

ends 0 "$example" --help
says "--junit FILE"
ends 0 "$example" --list
[ "$(wc -l <stdout.txt)" -eq 38 ] || fail "not 38 names: $(cat stdout.txt)"

# Wrong usage: the value that is wrong is named.
ends 2 "$example" --function KorMirror
says "there is no function KorMirror; --list" stderr.txt
ends 2 "$example" --function KorPlanarMirror --function KorRawToI420
says "the table has no KorRawToI420_C_" stderr.txt
ends 2 "$broken" absence
says "the table has none of the functions" stderr.txt
ends 2 "$example" --seed seven
says '--seed takes a number from 1 on, not "seven"' stderr.txt
ends 2 "$example" --case 99999999 --junit junit.xml
says "there is no case 99999999" stderr.txt
[ ! -s junit.xml ] || fail "nothing was tried, yet there is a report: $(cat junit.xml)"
ends 2 "$example" --junit no/such/directory.xml
says "cannot write no/such/directory.xml" stderr.txt
ends 2 "$example" --nonsense
says "--help tells the usage" stderr.txt
ends 2 "$example" nonsense
says '"nonsense" is no option' stderr.txt

if [ "$failures" -gt 0 ]; then
    echo "$failures failed"
    exit 1
fi
echo "all passed"
