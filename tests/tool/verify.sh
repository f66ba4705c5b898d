# The digests of the library that the tool is linked with.
manifest=$(cd "$(dirname "$0")/../../conformance" && pwd)/digests.txt
. "$(dirname "$0")/common.sh"

works verify >found.txt
count=$(grep -c '^Kor' "$manifest")
grep -qx "[a-z0-9]*: $count digests of 38 functions agree" found.txt || fail "verify printed: $(cat found.txt)"
works verify --manifest - <"$manifest" >again.txt
same found.txt again.txt

# One wrong digest, one missing and one extra give exactly three lines.
sed -e 's/^\(KorI420ToBGRA_C_ level=2\) ..../\1 0000/' -e '/^KorPlanarMirror_C_ walk=up/d' \
    -e 's/^KorI420toYuv2_C_ - .*/KorI420toYuv2_C_ more=1 0123456789abcdef\n&/' "$manifest" >changed.txt
refuses 1 "3 of $count digests differ" verify --manifest changed.txt
cut -d ' ' -f 2- stdout.txt >differences.txt && mv differences.txt stdout.txt
[ "$(wc -l <stdout.txt)" -eq 3 ] || fail "verify printed: $(cat stdout.txt)"
for line in "KorI420ToBGRA_C_ level=2: expected 0000" "KorPlanarMirror_C_ walk=up: expected nothing, found " \
    "KorI420toYuv2_C_ more=1: expected 0123456789abcdef, found nothing"; do
    grep -qF "$line" stdout.txt || fail "verify did not say '$line' but: $(cat stdout.txt)"
done

sed -i '5i nonsense' changed.txt
refuses 1 "changed.txt: line 5 is not a function, an option and 16 hexadecimal digits: nonsense" \
    verify --manifest changed.txt
for content in "" "# nothing but a comment"; do
    echo "$content" >empty.txt
    refuses 1 "empty.txt: has no digests; expected lines of a function, an option and 16 hexadecimal digits" \
        verify --manifest empty.txt
done
if [ -r /dev/zero ]; then
    refuses 1 "/dev/zero: is larger than 16777216 bytes; expected a manifest of digests" verify --manifest /dev/zero
fi
refuses 1 "missing.txt" verify --manifest missing.txt
refuses 2 "korframe verify --help" verify --manifest

# Every target is tried or named, and the automatic choice is tried.
works verify --all-targets >all.txt
grep -qx "portable: $count digests of 38 functions agree" all.txt || fail "verify --all-targets printed: $(cat all.txt)"
grep -qx "automatic: $count digests of 38 functions agree" all.txt || fail "verify --all-targets printed: $(cat all.txt)"
if grep -vE ": ($count digests of 38 functions agree|not run; this machine cannot run it)\$" all.txt; then
    fail "verify --all-targets printed: $(cat all.txt)"
fi
KOR_TARGET=portable "$korframe" verify | grep -q '^portable: ' || fail "KOR_TARGET=portable is not heeded"
KOR_TARGET=portable "$korframe" --version | grep -q '(target portable)$' || fail "--version does not name the target"
export KOR_TARGET=avx1
refuses 2 "KOR_TARGET: unknown target 'avx1'; expected " verify
refuses 2 "KOR_TARGET: unknown target 'avx1'; expected " --version
# A target that was compiled in and cannot be run is refused, too.
unrunnable=$(sed -n 's/: not run.*//p' all.txt | head -n 1)
if [ -n "$unrunnable" ]; then
    export KOR_TARGET="$unrunnable"
    refuses 2 "KOR_TARGET: this machine cannot run the target '$unrunnable'; expected " verify
fi
unset KOR_TARGET
finish
