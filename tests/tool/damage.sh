# Whatever is wrong with an input or output gives one clear line, the right exit status and nothing half-written.
. "$(dirname "$0")/common.sh"
mkdir pictures
"$fixtures" pictures || exit 1
works testcard card.png --size 64x64
works testcard card.ppm --size 64x64
works convert card.png clip.y4m
cp clip.y4m kept.y4m

# A file truncated at any length is refused, and an existing output stays.
cut_everywhere() {
    size=$(wc -c <"$1")
    for length in $(seq 0 "$2" $((size - 1))); do
        head -c "$length" "$1" >"cut"
        "$korframe" convert "cut" kept.y4m >stdout.txt 2>stderr.txt
        status=$?
        [ $status -eq 1 ] || fail "$1 cut to $length bytes exited with $status: $(cat stderr.txt)"
        [ "$(grep -c '^korframe: cut: ' stderr.txt)" -eq 1 ] || fail "$1 cut to $length bytes: $(cat stderr.txt)"
    done
    leaves_nothing
    same kept.y4m clip.y4m
}
cut_everywhere pictures/half.png 5
cut_everywhere pictures/white.jpg 41
cut_everywhere pictures/black-progressive.jpg 53
printf 'P6\n2 2\n255\nabcdefghijkl' >small.ppm
cut_everywhere small.ppm 1
{ head -1 clip.y4m | sed 's/W64 H64/W4 H2/'; printf 'FRAME\nabcdefghijkl'; } >small.y4m
cut_everywhere small.y4m 1

# A byte changed anywhere is refused or gives a picture. It never crashes or prints more than one line.
bytes "ff" >ff
change_everywhere() {
    size=$(wc -c <"$1")
    for at in $(seq 0 "$2" $((size - 1))); do
        { head -c "$at" "$1"; cat ff; tail -c $((size - at - 1)) "$1"; } >changed
        "$korframe" convert changed out.i420 >stdout.txt 2>stderr.txt
        status=$?
        [ $status -le 2 ] || fail "$1 changed at $at exited with $status: $(cat stderr.txt)"
        [ "$(wc -l <stderr.txt)" -le 1 ] || fail "$1 changed at $at: $(cat stderr.txt)"
    done
    leaves_nothing
}
change_everywhere pictures/half.png 5
change_everywhere pictures/rotated-6.jpg 37
change_everywhere small.y4m 3
change_everywhere small.ppm 1

# Sizes that are zero, absurd, or would overflow.
y4m() {
    printf 'YUV4MPEG2 %s\nFRAME\n' "$1" >size.y4m
    refuses 1 "size.y4m: $2" convert size.y4m none.y4m
}
y4m "W0 H0" "size 0x0 is empty; each side must be at least 1"
y4m "W4 H0" "size 4x0 is empty"
y4m "W32769 H1" "size 32769x1 is too large; the limit is 32768 on each side"
y4m "W32768 H32768" "size 32768x32768 is too large; the limit is 268435456 pixels"
y4m "W4294967296 H4294967296" "size 4294967296x4294967296 is too large"
y4m "W18446744073709551616 H2" "has the field W18446744073709551616 in its Y4M header; expected a number of pixels after W"
y4m "W99999999999999999999999 H2" "has the field W99999999999999999999999"
y4m "W-2 H2" "has the field W-2"
# The largest size accepted claims 400 MB, but costs nothing if no data follows.
y4m "W32768 H8192" "frame 1 is truncated: 402653184 of its 402653184 bytes are missing"
for size in 0x2 2x0 -2x2 2x-2 2x 2 x 2x2x2 1e3x2 18446744073709551617x1 32768x32768; do
    refuses 2 ", not '$size'" convert card.ppm none.y4m --from i420 --size "$size"
done
# A PNG header of 2^31 - 1 by 2^31 - 1 pixels, and one of no pixels, with correct checksums.
{ head -c 16 pictures/rgb.png; bytes "7f ff ff ff 7f ff ff ff 08 02 00 00 00 69 52 1e e5"; tail -c +34 pictures/rgb.png; } >huge.png
refuses 1 "huge.png: " convert huge.png none.y4m
{ head -c 16 pictures/rgb.png; bytes "00 00 00 00 00 00 00 01 08 02 00 00 00 c3 3e 61 cb"; tail -c +34 pictures/rgb.png; } >zero.png
refuses 1 "zero.png: is a damaged PNG file" convert zero.png none.y4m
# 65535 by 65535 pixels of JPEG.
at=$(LC_ALL=C grep -obUaP '\xff\xc0' pictures/white.jpg | head -1 | cut -d: -f1)
{ head -c $((at + 5)) pictures/white.jpg; bytes "ff ff ff ff"; tail -c +$((at + 10)) pictures/white.jpg; } >wide.jpg
refuses 1 "wide.jpg: " convert wide.jpg none.y4m
{ head -c $((at + 5)) pictures/white.jpg; bytes "00 00 00 10"; tail -c +$((at + 10)) pictures/white.jpg; } >flat.jpg
refuses 1 "flat.jpg: " convert flat.jpg none.y4m
absent none.y4m

# Outputs that cannot be created or that fill up. A limit on file sizes stands in for a full disk.
refuses 1 "nowhere/out.y4m: cannot be created: No such file or directory" convert card.png nowhere/out.y4m
refuses 1 "card.png/out.y4m: cannot be created: Not a directory" convert card.png card.png/out.y4m
long=$(repeat 300 61)
refuses 1 "aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa.y4m: cannot be renamed into place: File name too long" convert card.png "$long.y4m"
refuses 2 "OUTPUT is required" convert card.png
refuses 2 ": the name does not say what to write; add --to, or use a name that ends in .y4m, .png, .ppm or the name of a raw layout" convert card.png ""
if [ "$(id -u)" -ne 0 ]; then
    mkdir locked
    chmod 555 locked
    refuses 1 "locked/out.y4m: cannot be created: Permission denied" convert card.png locked/out.y4m
    chmod 000 small.ppm
    refuses 1 "small.ppm: cannot be opened: Permission denied" convert small.ppm none.y4m
fi
if [ -w /dev/full ]; then
    for kind in y4m png ppm bgra; do
        refuses 1 "/dev/full: cannot be written: No space left on device" convert card.png /dev/full --to $kind
    done
    ln -s /dev/full full.png
    refuses 1 "full.png: cannot be written: No space left on device" testcard full.png
    "$korframe" convert card.png - >/dev/full 2>stderr.txt
    [ $? -eq 1 ] || fail "a full standard output"
    grep -qF "standard output: cannot be written: No space left on device" stderr.txt || fail "a full standard output: $(cat stderr.txt)"
fi
mkdir limited
for output in out.y4m out.bgra out.ppm kept.y4m; do
    cp clip.y4m limited/kept.y4m
    (
        ulimit -f 4
        cd limited && exec "$korframe" convert ../card.png $output 2>../stderr.txt
    )
    status=$?
    [ $status -eq 1 ] || fail "a limit on files exited with $status"
    grep -qF "$output: cannot be written: File too large" stderr.txt || fail "a limit on files: $(cat stderr.txt)"
    leaves_nothing
    same limited/kept.y4m clip.y4m
    [ "$(find limited -type f | wc -l)" -eq 1 ] || fail "half of $output remains"
done
if unshare -rm true 2>/dev/null; then
    mkdir small
    unshare -rm sh -c 'mount -t tmpfs -o size=8k none small && cp clip.y4m small/kept.y4m 2>/dev/null
        cd small && echo before >kept.y4m
        "$0" convert ../card.png kept.y4m 2>../stderr.txt; echo $? >../status.txt
        ls -A >../list.txt; cat kept.y4m >../kept.txt' "$korframe"
    [ "$(cat status.txt)" = 1 ] || fail "a full disk exited with $(cat status.txt)"
    grep -qF "kept.y4m: cannot be written: No space left on device" stderr.txt || fail "a full disk: $(cat stderr.txt)"
    [ "$(cat list.txt)" = kept.y4m ] && [ "$(cat kept.txt)" = before ] || fail "a full disk left $(cat list.txt): $(cat kept.txt)"
fi

# Pipes whose other end closes before the first byte or in the middle, with more to come than a pipe of 1 MiB holds.
cat clip.y4m >long.y4m
for _ in $(seq 80); do tail -n +2 clip.y4m; done >>long.y4m
for jobs in 1 4; do
    for count in 0 20000; do
        { "$korframe" convert long.y4m - --to bgra --jobs $jobs 2>stderr.txt; echo $? >status.txt; } | head -c $count >/dev/null
        [ "$(cat status.txt)" = 1 ] || fail "a pipe closed after $count bytes exited with $(cat status.txt)"
        [ "$(cat stderr.txt)" = "korframe: standard output: cannot be written: Broken pipe" ] || fail "a pipe closed after $count bytes: $(cat stderr.txt)"
    done
done
: | "$korframe" convert - none.y4m 2>stderr.txt
[ $? -eq 1 ] || fail "an empty standard input was taken"
grep -qF "standard input: is empty; expected a PNG, JPEG, PPM or Y4M file or raw frames" stderr.txt || fail "an empty standard input: $(cat stderr.txt)"
"$korframe" convert - none.y4m <&- 2>stderr.txt
[ $? -eq 1 ] || fail "a closed standard input was taken"
grep -qF "standard input: cannot be read: Bad file descriptor" stderr.txt || fail "a closed standard input: $(cat stderr.txt)"
"$korframe" convert card.png - >&- 2>stderr.txt
[ $? -eq 1 ] || fail "a closed standard output was taken"
grep -qF "standard output: cannot be written: Bad file descriptor" stderr.txt || fail "a closed standard output: $(cat stderr.txt)"
# A file opened after a standard stream was closed is not mistaken for that stream.
"$korframe" testcard no-output.png --size 64x64 >&- 2>stderr.txt || fail "without standard output: $(cat stderr.txt)"
"$korframe" testcard no-input.png --size 64x64 <&- 2>stderr.txt || fail "without standard input: $(cat stderr.txt)"
"$korframe" testcard no-error.png --size 64x64 2>&- || fail "without standard error"
"$korframe" testcard no-stream.png --size 64x64 <&- >&- 2>&- || fail "without standard streams"
for output in no-output.png no-input.png no-error.png no-stream.png; do
    same $output card.png
done
"$korframe" info card.png >&- 2>stderr.txt
[ $? -eq 1 ] || fail "info took a closed standard output"
grep -qF "standard output: cannot be written: Bad file descriptor" stderr.txt || fail "info on a closed standard output: $(cat stderr.txt)"
leaves_nothing

# Files that hold no matrix.
bytes "00 ff 00 ff" >zeros.txt
refuses 1 "--matrix zeros.txt: line 1, column 1: " convert card.png none.y4m --matrix zeros.txt
refuses 1 "--matrix .: is a directory" convert card.png none.y4m --matrix .
refuses 1 "--matrix card.png: line 1, column 1: " convert card.png none.y4m --matrix card.png
if [ -r /dev/zero ]; then
    refuses 1 "--matrix /dev/zero: is larger than 65536 bytes; expected three lines of three numbers" convert card.png none.y4m --matrix /dev/zero
fi
absent none.y4m

finish
