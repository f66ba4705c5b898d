# What the tool's tests share. Each sources it with the program and the fixture writer as arguments. It changes to a
# temporary directory, which is removed when the test ends.
set -u

test=$0
korframe=$1
fixtures=$2
directory=$(mktemp -d)
trap 'rm -rf "$directory"' EXIT
cd "$directory" || exit 1
failures=0

fail() {
    echo "FAILED: $*"
    failures=$((failures + 1))
}

# What a test leaves out, and why: skips REASON. CTest's summary ends with these lines.
skips() {
    echo "skipped: $(basename "$test" .sh): $*"
}

finish() {
    if [ "$failures" -gt 0 ]; then
        echo "$failures failed"
        exit 1
    fi
    echo "all passed"
}

# Writes bytes given in hexadecimal: bytes "50 36 0a".
bytes() {
    for pair in $1; do
        # shellcheck disable=SC2059
        printf "\\$(printf '%03o' "0x$pair")"
    done
}

# Repeats a byte: repeat COUNT 80.
repeat() {
    head -c "$1" /dev/zero | tr '\0' "\\$(printf '%03o' "0x$2")"
}

hex() {
    od -An -v -tx1 "$1" | tr -s ' \n' '  ' | sed 's/^ //; s/ $//'
}

# Checks the bytes of a file: holds FILE "51 5a ...".
holds() {
    actual=$(hex "$1")
    [ "$actual" = "$2" ] || fail "$1 holds '$actual', expected '$2'"
}

same() {
    cmp "$1" "$2" || fail "$1 and $2 differ"
}

# Checks that a run succeeds without messages: works ARGUMENTS...
works() {
    "$korframe" "$@" 2>stderr.txt
    status=$?
    [ "$status" -eq 0 ] || fail "korframe $* exited with $status: $(cat stderr.txt)"
    [ ! -s stderr.txt ] || fail "korframe $* printed: $(cat stderr.txt)"
}

# Checks that a run succeeds with a single warning that contains MESSAGE: warns MESSAGE ARGUMENTS...
warns() {
    message=$1
    shift
    "$korframe" "$@" 2>stderr.txt || fail "korframe $* failed: $(cat stderr.txt)"
    [ "$(wc -l <stderr.txt)" -eq 1 ] || fail "korframe $* did not print one line: $(cat stderr.txt)"
    grep -qF -- "korframe: warning: $message" stderr.txt || fail "korframe $* printed '$(cat stderr.txt)', expected '$message'"
}

# Checks that a run exits with STATUS and one line that contains MESSAGE, and leaves no temporary file:
# refuses STATUS MESSAGE ARGUMENTS...
refuses() {
    expected=$1
    message=$2
    shift 2
    "$korframe" "$@" >stdout.txt 2>stderr.txt
    status=$?
    [ "$status" -eq "$expected" ] || fail "korframe $* exited with $status, expected $expected: $(cat stderr.txt)"
    [ "$(wc -l <stderr.txt)" -eq 1 ] || fail "korframe $* did not print one line: $(cat stderr.txt)"
    grep -qF -- "korframe: " stderr.txt || fail "korframe $* did not print its name: $(cat stderr.txt)"
    grep -qF -- "$message" stderr.txt || fail "korframe $* printed '$(cat stderr.txt)', expected '$message'"
    leaves_nothing
}

# Whether strace is installed and allowed.
can_trace() { command -v strace >/dev/null && strace -o trace.txt -e trace=none true 2>/dev/null; }

# Runs a program under strace, which writes trace.txt: traced OPTIONS... PROGRAM ARGUMENTS... LeakSanitizer does not work
# in a traced process.
traced() { ASAN_OPTIONS="${ASAN_OPTIONS-}:detect_leaks=0" strace -f -o trace.txt "$@"; }

leaves_nothing() {
    [ -z "$(find . -name '.korframe-*')" ] || fail "a temporary file remains: $(find . -name '.korframe-*')"
}

absent() {
    for name in "$@"; do
        [ ! -e "$name" ] || fail "$name exists"
    done
}
