# What the program says about files: info, compare, formats.
. "$(dirname "$0")/common.sh"
mkdir pictures
"$fixtures" pictures || exit 1

# shows EXPECTED ARGUMENTS...: checks that a run succeeds and prints exactly this.
shows() {
    printf '%s\n' "$1" >expected
    shift
    works "$@" >stdout.txt
    cmp -s stdout.txt expected || fail "korframe $* printed '$(cat stdout.txt)', expected '$(cat expected)'"
}

# ---- info ----

frame="01 02 03 04 05 06 07 08 a1 a3 b1 b3"
bytes "$frame $frame" >clip.i420
{ printf 'YUV4MPEG2 W4 H2 F30000:1001 It A4:3 C420mpeg2 XYSCSS=420MPEG2 XCOLORRANGE=FULL\nFRAME\n'; bytes "$frame"; printf 'FRAME Ippp\n'; bytes "$frame"; } >clip.y4m
shows "file         clip.y4m
container    Y4M
layout       i420 (planar 4:2:0: luma, U, V)
size         4x2
frame        12 bytes
planes       Y 2 rows of 4 bytes, U 1 rows of 2 bytes, V 1 rows of 2 bytes
rate         30000:1001 frames/s
aspect       4:3
interlacing  t (upper field first)
range        full
chroma       420mpeg2
field        XYSCSS=420MPEG2
field        XCOLORRANGE=FULL
frames       2" info clip.y4m
shows "file         clip.i420
container    raw frames
layout       nv12 (luma plane, then pairs U V for 2x2 pixels)
size         4x2
frame        12 bytes
planes       Y 2 rows of 4 bytes, UV 1 rows of 4 bytes
frames       2" info clip.i420 --from nv12 --size 4x2
shows "file         pictures/alpha.png
container    PNG picture
layout       rgba (32-bit RGB, bytes R G B A)
size         2x2
frame        16 bytes
planes       RGBA 2 rows of 8 bytes
frames       1" info pictures/alpha.png
"$korframe" info - <pictures/white.jpg >stdout.txt || fail "info of standard input"
grep -q '^container    JPEG picture$' stdout.txt || fail "info of standard input: $(cat stdout.txt)"
bytes "01 02 03 04 05 06 07 08 09 0a 0b 0c 0d 0e 0f 10" >packed.argb
"$korframe" info packed.argb --size 2x2 | grep -q '^planes       ARGB 2 rows of 8 bytes$' || fail "info of argb"
"$korframe" info packed.argb --size 4x2 --from uyvy | grep -q '^planes       UYV 2 rows of 8 bytes$' || fail "info of uyvy"
printf 'YUV4MPEG2 W4 H2 I?\nFRAME\n%s' 123456789012 >bare.y4m
"$korframe" info bare.y4m >stdout.txt || fail "info of a bare header"
for line in "rate         25:1 frames/s" "aspect       0:0 (unknown)" "interlacing  ? (unknown)" "range        not given"; do
    grep -qFx "$line" stdout.txt || fail "info of a bare header has no '$line'"
done
# A file cannot send escape sequences to the terminal.
printf 'YUV4MPEG2 W4 H2 F0:0 XA\033[31mred XB\302\233m\nFRAME\n%s' 123456789012 >escape.y4m
"$korframe" info escape.y4m >stdout.txt || fail "info of an escape sequence"
for line in "field        XA?[31mred" "rate         0:0 (unknown)"; do
    grep -qFx "$line" stdout.txt || fail "info has no '$line': $(cat stdout.txt)"
done
grep -q "$(printf '\302\233')" stdout.txt && fail "info prints U+009B"
cp escape.y4m "$(printf 'a\033b.y4m')"
"$korframe" compare "$(printf 'a\033b.y4m')" clip.y4m >stdout.txt
grep -q "$(printf '\033')" stdout.txt && fail "compare prints an escape character"

# For programs.
shows '{
  "file": "clip.y4m",
  "container": "Y4M",
  "layout": "i420",
  "width": 4,
  "height": 2,
  "frame_bytes": 12,
  "planes": [{"samples": "Y", "rows": 2, "row_bytes": 4}, {"samples": "U", "rows": 1, "row_bytes": 2}, {"samples": "V", "rows": 1, "row_bytes": 2}],
  "rate": "30000:1001",
  "aspect": "4:3",
  "interlacing": "t",
  "range": "full",
  "chroma": "420mpeg2",
  "fields": ["XYSCSS=420MPEG2", "XCOLORRANGE=FULL"],
  "frames": 2,
  "complete": true
}' info clip.y4m --json
# Valid, whatever bytes a name or a field has.
strange=$(printf 'q"\\\303\251\377\355\240\200\n.y4m')
cp escape.y4m "$strange"
works info "$strange" --json >stdout.txt
python3 -c '
import json, sys
info = json.load(open("stdout.txt", encoding="utf-8"))
assert info["file"] == "q\"\\\u00e9\ufffd\ufffd\ufffd\ufffd\n.y4m", info["file"]
assert info["fields"] == ["XA\x1b[31mred", "XB\u009bm"], info["fields"]
' || fail "JSON: $(cat stdout.txt)"
head -c 95 clip.y4m >cut.y4m
refuses 1 "cut.y4m: frame 1 is truncated" info cut.y4m --json
python3 -c '
import json
info = json.load(open("stdout.txt", encoding="utf-8"))
assert info["frames"] == 0 and info["complete"] is False
' || fail "JSON of a cut file: $(cat stdout.txt)"
refuses 1 "cut.y4m: frame 1 is truncated" info cut.y4m
grep -q '^frames       0, then the file breaks off$' stdout.txt || fail "info of a cut file: $(cat stdout.txt)"
refuses 2 "clip.i420: raw i420 frames carry no size; add --size WIDTHxHEIGHT" info clip.i420
refuses 1 "gone.y4m: cannot be opened" info gone.y4m

# ---- compare ----

# differs EXPECTED ARGUMENTS...
differs() {
    printf '%s\n' "$1" >expected
    shift
    "$korframe" compare "$@" >stdout.txt 2>stderr.txt
    status=$?
    [ $status -eq 1 ] || fail "compare $* exited with $status, expected 1"
    [ ! -s stderr.txt ] || fail "compare $* printed: $(cat stderr.txt)"
    cmp -s stdout.txt expected || fail "compare $* printed '$(cat stdout.txt)', expected '$(cat expected)'"
}
alike() {
    works compare "$@" >stdout.txt
    [ ! -s stdout.txt ] || fail "compare $* printed: $(cat stdout.txt)"
}

alike clip.y4m clip.y4m
alike clip.i420 clip.y4m --size 4x2
alike clip.y4m clip.i420 --size 4x2 --from i420
"$korframe" compare - clip.y4m <clip.y4m || fail "compare with standard input"
# In the second frame V at column 1, row 0 is 3 higher: one of four V samples, so the mean square is 9 / 4.
bytes "$frame 01 02 03 04 05 06 07 08 a1 a3 b1 b6" >other.i420
differs "clip.i420 other.i420 differ: frame 2, plane V, x 1, y 0: 179 and 182
PSNR in dB: Y inf U inf V 44.61" clip.i420 other.i420 --size 4x2
bytes "01 02 03 04 05 06 17 08 a1 a3 b1 b3 $frame" >other.i420
differs "clip.i420 other.i420 differ: frame 1, plane Y, x 2, y 1: 7 and 23
PSNR in dB: Y 36.09 U inf V inf" clip.i420 other.i420 --size 4x2
bytes "$frame" >short.i420
differs "short.i420 ends after frame 1, but clip.y4m goes on" clip.y4m short.i420 --size 4x2
differs "clip.y4m pictures/rgb.png differ: 4x2 and 2x2 pixels" clip.y4m pictures/rgb.png
{ printf 'YUV4MPEG2 W4 H2 C444\nFRAME\n'; repeat 24 80; } >full.y4m
differs "clip.y4m full.y4m differ: i420 and i444 cannot be compared sample by sample" clip.y4m full.y4m
# Samples in other places: interleaved, packed, in blocks, RGB with and without alpha. Each is found there.
places() {
    expected=$1
    first=$2
    second=$3
    size=$4
    works compare "$first" "$second" --size "$size" >stdout.txt
    size_of_second=$(wc -c <"$second")
    at=$5
    { head -c "$at" "$second"; bytes "ff"; tail -c $((size_of_second - at - 1)) "$second"; } >"changed.${second##*.}"
    "$korframe" compare "$first" "changed.${second##*.}" --size "$size" >stdout.txt
    grep -qF "$expected" stdout.txt || fail "$first $second: $(cat stdout.txt), expected $expected"
}
bytes "01 02 03 04 05 06 07 08 a1 b1 a3 b3" >one.nv12
bytes "01 02 03 04 05 06 07 08 b1 a1 b3 a3" >one.nv21
bytes "$frame" >one.i420
works convert one.i420 one.yuy2 --size 4x2
works convert one.i420 one.uyvy --size 4x2
cp one.nv12 one.m420
bytes "00 01 02 10 11 12" >one.rgb
bytes "02 01 00 ff 12 11 10 ff" >one.bgra
places "plane U, x 1, y 0: 163 and 255" one.i420 one.nv12 4x2 10
places "plane V, x 0, y 0: 177 and 255" one.i420 one.nv21 4x2 8
places "plane Y, x 1, y 1: 6 and 255" one.i420 one.m420 4x2 5
places "plane V, x 1, y 0: 179 and 255" one.i420 one.m420 4x2 11
places "plane Y, x 3, y 1: 8 and 255" one.yuy2 one.uyvy 4x2 15
places "plane V, x 0, y 1: 177 and 255" one.yuy2 one.uyvy 4x2 10
places "plane R, x 1, y 0: 16 and 255" one.rgb one.bgra 2x1 6
alike pictures/rgb.png pictures/rgb16.png
"$korframe" compare pictures/rgb.png pictures/alpha.png >stdout.txt && fail "alpha was not compared"
grep -q 'plane G, x 1, y 0: 0 and 255$' stdout.txt || fail "compare of pictures: $(cat stdout.txt)"
refuses 2 "gone.y4m: cannot be opened" compare clip.y4m gone.y4m
refuses 2 "cut.y4m: frame 1 is truncated" compare clip.y4m cut.y4m
refuses 2 "clip.i420: raw i420 frames carry no size; add --size WIDTHxHEIGHT" compare clip.y4m clip.i420
refuses 2 "-: only one of the two files can come from standard input" compare - -
refuses 2 "B is required" compare clip.y4m

# ---- formats ----

works formats >stdout.txt
# Every layout is listed, with its bytes.
line() {
    grep -q "^$1 .* $2\$" stdout.txt || fail "formats has no line '$1 ... $2': $(grep "^$1 " stdout.txt)"
}
line i420 "Y1 Y2 Y3 Y4 | U1 | V1"
line i422 "Y1 Y2 Y3 Y4 | U1 U3 | V1 V3"
line i444 "Y1 Y2 Y3 Y4 | U1 U2 U3 U4 | V1 V2 V3 V4"
line nv12 "Y1 Y2 Y3 Y4 | U1 V1"
line nv21 "Y1 Y2 Y3 Y4 | V1 U1"
line yuy2 "Y1 U1 Y2 V1 Y3 U3 Y4 V3"
line uyvy "U1 Y1 V1 Y2 U3 Y3 V3 Y4"
line yuv2 "Y1 U1 Y2 V1 Y3 U3 Y4 V3"
line m420 "Y1 Y2 Y3 Y4 U1 V1"
line bgra "B1 G1 R1 A1 B2 G2 R2 A2 B3 G3 R3 A3 B4 G4 R4 A4"
line rgba "R1 G1 B1 A1 R2 G2 B2 A2 R3 G3 B3 A3 R4 G4 B4 A4"
line argb "A1 R1 G1 B1 A2 R2 G2 B2 A3 R3 G3 B3 A4 R4 G4 B4"
line abgr "A1 B1 G1 R1 A2 B2 G2 R2 A3 B3 G3 R3 A4 B4 G4 R4"
line rgb24 "R1 G1 B1 R2 G2 B2 R3 G3 B3 R4 G4 B4"
line bgr24 "B1 G1 R1 B2 G2 R2 B3 G3 R3 B4 G4 R4"
[ "$(awk '/^[a-z]/ { print $1 } /^$/ { exit }' stdout.txt | wc -l)" -eq 15 ] || fail "formats lists other layouts than these"
# Something that users should know before they wonder.
tr '\n' ' ' <stdout.txt >line.txt
for sentence in "White comes back from YUV as 254: rendering scales 16 to 235 in whole numbers, rounded down, and 149 * 235 / 128 falls just short of 255 once black is taken off." \
    "A picture gets a little darker each time it goes there and back." "Chroma is averaged where there is less of it and repeated where there is more."; do
    grep -qF -- "$sentence" line.txt || fail "formats does not say '$sentence'"
done
# Any layout becomes any other, and a frame has the size that info gives.
repeat 16384 80 >any
layouts=$(awk '/^[a-z]/ { print $1 } /^$/ { exit }' stdout.txt)
for from in $layouts; do
    for to in $layouts; do
        works convert any out --from "$from" --to "$to" --size 16x16 --frames 1 --quiet
        "$korframe" info out --from "$to" --size 16x16 | grep -q '^frames       1$' || fail "$from to $to is no frame of 16x16"
    done
done

# Failing to write the output is an error.
if [ -w /dev/full ]; then
    for arguments in "formats" "info clip.y4m" "--help" "convert --help"; do
        # shellcheck disable=SC2086
        "$korframe" $arguments >/dev/full 2>stderr.txt
        [ $? -eq 1 ] || fail "$arguments to a full device did not end with 1"
        grep -q "standard output: cannot be written" stderr.txt || fail "$arguments to a full device: $(cat stderr.txt)"
    done
    "$korframe" compare clip.y4m full.y4m >/dev/full 2>stderr.txt
    [ $? -eq 2 ] || fail "compare to a full device did not end with 2"
fi

finish
