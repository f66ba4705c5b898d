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

# finds CRIME FUNCTION TITLE [OPTION]...: the crime is found in the function by a quick run, or by one with other options,
# reported in these words, and found again by the command that the report prints.
finds() {
    crime=$1
    function=$2
    title=$3
    shift 3
    [ $# -gt 0 ] || set -- --quick
    ends 1 "$broken" "$crime" --junit junit.xml "$@"
    grep -q "^$function  *DIFFERS" stdout.txt || fail "$crime was not found in $function: $(cat stdout.txt)"
    says "  $title"
    says " 1 different, "
    says "  call: $function("
    says "<failure message=\"$title" junit.xml
    cp stdout.txt first.txt
    # The kit does not see the program's own first argument.
    again=$(sed -n 's/^  again: [^ ]* //p' first.txt)
    # Word splitting is what the options are for.
    # shellcheck disable=SC2086
    ends 1 "$broken" "$crime" $again
    says "  $title"
    says "0 same, 1 different, 0 not tried;"
    case $again in *--case*) says "not tried; 1 cases" ;; esac
    # Either of two threads may find what they do to each other.
    lines='^  call:\|^  case:'
    [ "$crime" != scratch ] || lines='^  call:'
    grep "$lines" first.txt >wanted.txt
    grep "$lines" stdout.txt >found.txt
    cmp wanted.txt found.txt || fail "$crime was not found again in the same call"
}

# commits CRIME: whether this processor can.
commits() {
    "$broken" crimes | grep -qx "$1"
}

mirror=KorPlanarMirror_C_
sanitized=${KOR_CONFORMANCE_POISONS-0}

# Bytes.
finds sample $mirror "wrong byte in a destination: plane dst, row 1, column 4: expected "
finds source $mirror "changed a source: plane src, row 0, column 2: expected "
finds draw KorI420ToBGRA_C_ "drew other random bytes: expected 0 draws, found 1 draw (bytes: 1)"
finds restored $mirror "wrote to a source that it may only read: plane src, row "
if [ "$sanitized" -eq 0 ]; then
    finds padding $mirror "wrote outside of a plane: plane dst, row 1, column 18 (padding): expected "
    finds before $mirror "wrote outside of a plane: plane dst, 1 byte before the plane: expected "
    finds padread $mirror "crashed: SIGSEGV on touching plane src, row 0, column "
    finds padrewrite $mirror "crashed: SIGSEGV on touching plane dst, row 0, column "
else
    # The sanitizer ends the process at the touch itself.
    for crime in padding padread padrewrite; do
        finds $crime $mirror "ended the process: exit status 1"
    done
fi

# Signals.
finds behind $mirror "crashed: SIGSEGV on touching plane dst, 1 byte behind the plane"
finds read $mirror "crashed: SIGSEGV on touching plane src, 1 byte behind the plane"
finds empty KorI420ToBGRA_C_ "crashed: SIGSEGV on touching plane x, which is empty"
finds abroad $mirror "crashed: SIGSEGV at an address far from all planes"
finds trap $mirror "crashed: SIGTRAP"
finds abort $mirror "crashed: SIGABRT"
if [ "$sanitized" -eq 0 ]; then
    finds null KorI420ToBGRA_C_ "crashed: SIGSEGV at a null pointer or near it"
fi
finds stack $mirror "needs more stack than "

# The end of the process, or none.
finds exit $mirror "ended the process: exit status 0"
finds _exit $mirror "ended the process: exit status 0"
finds kill $mirror "ended the process: signal 9"
finds loop $mirror "never returned: still running after 1 s" --quick --time-limit 1
says "1 same, 1 different, 36 not tried;" first.txt
ends 1 "$broken" exit --quick --function $mirror --no-fork
says "DIFFERS: ended the process with exit() in case "

# The processor.
finds rounding $mirror "left the processor changed: rounding mode"
finds floats $mirror "wrong byte in a destination: plane dst, row 0, column 0: expected "
says "; rounding "
if commits register; then
    finds register $mirror "left the processor changed: register "
    finds flush $mirror "left the processor changed: flush to zero "
    finds denormals $mirror "wrong byte in a destination: plane dst, row 0, column 0: expected "
    says "denormal numbers flushed to zero"
else
    ends 0 "$broken" none --quick
    says "not checked here: registers and flags that a function has to preserve"
fi
if commits direction; then
    finds direction $mirror "left the processor changed: direction flag set"
    finds x87 $mirror "left the processor changed: x87 control word"
    finds mmx $mirror "left the processor changed: x87 or MMX registers in use (emms is missing)"
fi

# What is kept from call to call.
finds again $mirror "differs when called again with the same arguments: wrong byte in a destination: plane dst, row 0, "
finds nth $mirror "differs in call " --function $mirror
finds thread $mirror "wrong byte in a destination: plane dst, row 0, column 0: expected "
says "; on a second thread with a stack of "
# Two threads meet by chance; one of the last cases, tried alone, gives them long enough.
ends 0 "$broken" none --quick --function $mirror
cases=$(sed -n 's/.* not tried; \([0-9]*\) cases .*/\1/p' stdout.txt)
finds scratch $mirror "differs on two threads at once: wrong byte in a destination: plane dst, row " \
    --quick --function $mirror --case $((cases - 1))
ends 0 "$broken" none --quick
if grep -q '^not checked here: .*leaks of memory' stdout.txt; then
    echo "leaks: not checked here"
else
    finds leak $mirror "leaks memory: "
    says " bytes at every call"
    finds rareleak $mirror "leaks memory: " --function $mirror
    says " bytes in "
fi

# Targets: those that this machine can run are tried, the others are named, and none of it is called the same.
ends 1 "$broken" targets --quick --function $mirror --junit junit.xml
[ "$(grep -c "^target " stdout.txt)" -eq 4 ] || fail "not four targets: $(cat stdout.txt)"
says "targets not run, as this machine cannot: future"
says "broken: 2 same, 1 different, 0 not tried;"
grep -q "^  again: .* --target wrong .* --no-fork$" stdout.txt || fail "no command for the target: $(cat stdout.txt)"
says "<testcase classname=\"broken.automatic\" name=\"$mirror\"" junit.xml
says "<skipped message=\"not run: this machine cannot run target future\"/>" junit.xml
says 'failures="1" errors="0" skipped="1"' junit.xml
ends 0 "$broken" targets --quick --function $mirror --target right --target automatic
says "broken: 2 same, 0 different, 0 not tried;"
ends 1 "$broken" targets --quick --target wrong --no-fork
says "broken: 1 same, 1 different, 36 not tried;"
ends 2 "$broken" targets --target future
says "this machine cannot run any of the targets" stderr.txt
ends 2 "$broken" targets --target past
says "there is no target past; there are: future wrong right automatic" stderr.txt
ends 2 "$broken" none --target past
says "there is no target past; the set names none" stderr.txt
ends 0 "$broken" targets --list
says "target future"

# The picture of the difference, and the right number of differing bytes.
ends 1 "$broken" sample --quick --function KorPlanarMirror
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
    xmllint --noout junit.xml || fail "the report is not valid XML"
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
says " --help" stderr.txt
ends 2 "$example" nonsense
says "unexpected argument 'nonsense'" stderr.txt

if [ "$failures" -gt 0 ]; then
    echo "$failures failed"
    exit 1
fi
echo "all passed"
