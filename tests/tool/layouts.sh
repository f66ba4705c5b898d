# Conversions between layouts: samples that only change places, other chroma grids, ranges, and raw frames with padding.
. "$(dirname "$0")/common.sh"

# ---- Samples change places, and stay as they are ----

# Random bytes go round through every layout of a family.
head -c 96 /dev/urandom >random
# round BYTES LAYOUT SIZE THROUGH...
round() {
    head -c "$1" random >"in.$2"
    from=$2
    size=$3
    shift 3
    cp "in.$from" "step.$from"
    last=$from
    for to in "$@" "$from"; do
        works convert "step.$last" "step.$to" --size "$size"
        last=$to
    done
    same "in.$from" "step.$from"
}
round 24 i422 4x3 yuy2 uyvy i422 uyvy yuy2
round 12 i420 4x2 nv12 nv21 m420 nv21 nv12 m420 i420 nv21
round 45 rgb24 5x3 bgra rgba argb abgr bgr24
round 36 bgra 3x3 abgr rgba argb

bytes "01 02 03 04 05 06 07 08 a1 a3 b1 b3" >planes.i420
works convert planes.i420 out.nv12 --size 4x2
holds out.nv12 "01 02 03 04 05 06 07 08 a1 b1 a3 b3"
works convert planes.i420 out.nv21 --size 4x2
holds out.nv21 "01 02 03 04 05 06 07 08 b1 a1 b3 a3"
works convert planes.i420 out.i422 --size 4x2
holds out.i422 "01 02 03 04 05 06 07 08 a1 a3 a1 a3 b1 b3 b1 b3"
works convert planes.i420 out.i444 --size 4x2
holds out.i444 "01 02 03 04 05 06 07 08 a1 a1 a3 a3 a1 a1 a3 a3 b1 b1 b3 b3 b1 b1 b3 b3"
# Of several rows each is repeated.
bytes "01 02 03 04 05 06 a1 a2 a3 b1 b2 b3" >tall.i420
works convert tall.i420 out.i422 --size 1x6
holds out.i422 "01 02 03 04 05 06 a1 a1 a2 a2 a3 a3 b1 b1 b2 b2 b3 b3"
works convert tall.i420 out.i444 --size 1x6
holds out.i444 "01 02 03 04 05 06 a1 a1 a2 a2 a3 a3 b1 b1 b2 b2 b3 b3"
# Rotated, and of odd size.
works convert planes.i420 out.nv12 --size 4x2 --rotate 90
holds out.nv12 "05 01 06 02 07 03 08 04 a1 b1 a3 b3"
bytes "01 02 03 04 05 06 07 08 09 a1 a2 a3 a4 b1 b2 b3 b4" >odd.i420
works convert odd.i420 out.nv21 --size 3x3
holds out.nv21 "01 02 03 04 05 06 07 08 09 b1 a1 b2 a2 b3 a3 b4 a4"
works convert odd.i420 out.i444 --size 3x3
holds out.i444 "01 02 03 04 05 06 07 08 09 a1 a1 a2 a1 a1 a2 a3 a3 a4 b1 b1 b2 b1 b1 b2 b3 b3 b4"

# Less chroma: the mean of the samples, rounded half up; at odd edges of those that there are.
bytes "01 02 03 04 05 06 07 08 09 10 13 20 11 12 30 40 41 51 80 80 80 80 80 80 80 80 80" >full.i444
works convert full.i444 out.i420 --size 3x3
holds out.i420 "01 02 03 04 05 06 07 08 09 12 28 41 51 80 80 80 80"
works convert full.i444 out.i422 --size 3x3
holds out.i422 "01 02 03 04 05 06 07 08 09 12 20 12 30 41 51 80 80 80 80 80 80"
works convert out.i422 out.i444 --size 3x3
holds out.i444 "01 02 03 04 05 06 07 08 09 12 12 20 12 12 30 41 41 51 80 80 80 80 80 80 80 80 80"
bytes "20 01 30 02 21 03 31 04" >two.uyvy
works convert two.uyvy out.i444 --size 2x2
holds out.i444 "01 02 03 04 20 20 21 21 30 30 31 31"

# Pictures keep every pixel, and an explicit step captures them all the same.
works testcard card.ppm --size 64x64
works convert card.ppm card.png
works convert card.png again.ppm
same card.ppm again.ppm
works convert card.ppm through.ppm --render bgra
cmp -s card.ppm through.ppm && fail "--render captures nothing"
refuses 2 "--matrix 709: no matrix is used because nothing is converted between RGB and YUV" convert card.ppm none.png --matrix 709
# A Y4M clip keeps its layout, and says so.
{ printf 'YUV4MPEG2 W4 H3 F25:1 Ip A1:1 C422 XCOLORRANGE=FULL\nFRAME\n'; cat in.i422; } >c422.y4m
works convert c422.y4m out.y4m
same c422.y4m out.y4m
works convert planes.i420 out.y4m --to y4m:i422 --size 4x2
head -1 out.y4m | grep -q ' C422 ' || fail "y4m:i422: $(head -1 out.y4m)"
refuses 2 "none.y4m is named as a Y4M file; expected i420, i422 or i444, or another name" convert planes.i420 none.y4m --to nv12 --size 4x2

# What must go through planes says so.
path() {
    expected=$1
    shift
    "$korframe" convert "$@" --verbose 2>stderr.txt || fail "$*: $(cat stderr.txt)"
    [ "$(cat stderr.txt)" = "korframe: path: $expected" ] || fail "$*: $(cat stderr.txt), expected $expected"
}
path "uyvy -> yuy2 (samples moved)" two.uyvy out.yuy2 --size 2x2
path "uyvy -> i420 planes -> flip -> yuy2" two.uyvy out.yuy2 --size 2x2 --flip
path "uyvy -> i420 planes -> rotate 90 -> bgra by BT.709" two.uyvy out.bgra --size 2x2 --rotate 90 --matrix bt709
path "i444 -> i420 planes" full.i444 out.i420 --size 3x3
path "bgra" in.bgra out.bgra --size 3x3

# ---- Names ----

for name in uyvy422 UYVY Uyvy422; do
    works convert two.uyvy out --from $name --to YUYV422 --size 2x2
    holds out "01 20 02 30 03 21 04 31"
done
for name in yuv420p I420 YUV420P; do
    works convert planes.i420 out --from $name --to NV12 --size 4x2
    holds out "01 02 03 04 05 06 07 08 a1 b1 a3 b3"
done
works convert in.rgb24 out --from rgb --to BGR --size 5x3
rate() {
    works convert planes.i420 out.y4m --size 4x2 --rate "$1"
    head -1 out.y4m | grep -q " F$2 " || fail "--rate $1: $(head -1 out.y4m)"
}
rate 30000/1001 30000:1001
rate 29.97 30000:1001
rate 23.976 24000:1001
rate 23.98 24000:1001
rate 59.94 60000:1001
rate 12.5 25:2
rate 30.0 30:1
for wrong in 29. .5 1.2345 29,97 30/0 0.0 -1; do
    refuses 2 "--rate: expected frames per second, for example 25, 30000:1001 or 29.97, not '$wrong'" convert planes.i420 none.y4m --size 4x2 --rate "$wrong"
done

# ---- Matrix ----

bytes "ff ff ff 00 00 ff" >two.rgb24
works convert two.rgb24 a.y4m --size 2x1 --matrix BT709
works convert two.rgb24 b.y4m --size 2x1 --matrix 709
same a.y4m b.y4m
head -1 a.y4m | grep -q ' XKORMATRIX=709$' || fail "the matrix is not written: $(head -1 a.y4m)"
# It is the default for rendering that file.
works convert a.y4m named.rgb24
works convert a.y4m given.rgb24 --matrix bt709
same named.rgb24 given.rgb24
for name in 601 bt601 bt.601 BT601 BT.601; do
    works convert two.rgb24 c.y4m --size 2x1 --matrix $name
    head -1 c.y4m | grep -q ' XKORMATRIX=601$' || fail "--matrix $name: $(head -1 c.y4m)"
done
works convert a.y4m other.rgb24 --matrix bt601
cmp -s named.rgb24 other.rgb24 && fail "the matrix makes no difference"

# notes WORDS ARGUMENTS...: succeeds with one line that contains the words.
notes() {
    words=$1
    shift
    "$korframe" convert "$@" 2>stderr.txt || fail "$*: $(cat stderr.txt)"
    [ "$(wc -l <stderr.txt)" -eq 1 ] || fail "$* did not print one line: $(cat stderr.txt)"
    grep -qF "$words" stderr.txt || fail "$*: '$(cat stderr.txt)', expected '$words'"
}
repeat 8640 80 >tall.rgb24 # two frames, and one note
notes "note: tall.rgb24: is converted by BT.601; HD video is usually BT.709, for which there is --matrix 709" tall.rgb24 out.y4m --size 2x720
works convert tall.rgb24 out.y4m --size 2x720 --matrix 601
works convert out.y4m out.rgb24
works convert tall.rgb24 out.y4m --size 2x720 --quiet
works convert tall.rgb24 out.rgb24 --size 2x720 --flip
head -c 4314 tall.rgb24 >lower.rgb24
works convert lower.rgb24 out.y4m --size 2x719

# ---- Range ----

# White, black and grey of full range; limited ones would not change.
bytes "ff 00 80 80" >full.i420
works convert full.i420 out.rgb24 --size 2x1 --range full
holds out.rgb24 "fe fe fe 00 00 00"
works convert full.i420 out.rgb24 --size 2x1 --range limited
holds out.rgb24 "ff ff ff 00 00 00"
bytes "51 51 51 51 5a ef" >red.i420
works convert red.i420 out.rgb24 --size 2x2 --range full
holds out.rgb24 "ed 0f 0e ed 0f 0e ed 0f 0e ed 0f 0e"
works convert full.i420 out.y4m --size 2x1 --range full
head -1 out.y4m | grep -q ' XCOLORRANGE=FULL$' || fail "--range full: $(head -1 out.y4m)"
{ printf 'YUV4MPEG2 W2 H1\nFRAME\n'; cat full.i420; printf 'FRAME\n'; cat full.i420; } >unknown.y4m
notes "note: unknown.y4m: does not give its range and is taken as limited; if it is full, add --range full" unknown.y4m out.rgb24
works convert unknown.y4m out.rgb24 --range limited
works convert unknown.y4m out.rgb24 --quiet
works convert unknown.y4m out.y4m
refuses 2 "--range: two.rgb24 is rgb24, which has one range only; expected a YUV layout" convert two.rgb24 none.y4m --size 2x1 --range full
refuses 2 "--range: expected full or limited, not 'tv'" convert full.i420 none.rgb24 --size 2x1 --range tv

# ---- Rows with padding ----

# Rows of 3 in 4 bytes and an even number of luma rows, as GStreamer writes them; two frames.
frame="01 02 03 ee 04 05 06 ee 07 08 09 ee ee ee ee ee a1 a2 ee ee a3 a4 ee ee b1 b2 ee ee b3 b4 ee ee"
bytes "$frame $frame" >padded.i420
works convert padded.i420 out.i420 --size 3x3 --stride 4x4,4,4
cat odd.i420 odd.i420 >expected
same out.i420 expected
# Without --stride the size of the file shows that padding would explain it.
"$korframe" info padded.i420 --size 3x3 >stdout.txt 2>stderr.txt && fail "padded frames pass for others"
grep -qF "note: padded.i420: its 64 bytes are no whole number of 3x3 i420 frames, but would be one if rows are padded; for that add --stride 4x4,4,4" stderr.txt || fail "no hint: $(cat stderr.txt)"
works info expected --from i420 --size 3x3 >stdout.txt
if command -v gst-launch-1.0 >/dev/null; then
    gst-launch-1.0 -q videotestsrc num-buffers=2 ! video/x-raw,format=I420,width=322,height=181 ! filesink location=gst.i420
    gst-launch-1.0 -q videotestsrc num-buffers=2 ! video/x-raw,format=I420,width=322,height=181 ! videoconvert ! video/x-raw,format=Y444 ! filesink location=gst.i444
    "$korframe" convert gst.i420 out.i420 --size 322x181 2>stderr.txt && fail "padded frames pass for others"
    grep -qF 'add --stride 324x182,164,164' stderr.txt || fail "no hint: $(cat stderr.txt)"
    works convert gst.i420 out.i420 --size 322x181 --stride 324x182,164,164
    works convert gst.i444 luma.i420 --size 322x181 --stride 324
    head -c 58282 out.i420 >a
    head -c 58282 luma.i420 >b
    same a b
fi
# One number: the others follow. M420 has padded rows of luma and chroma.
bytes "01 02 ee ee 03 04 ee ee a1 ee b1 ee" >padded.i420
works convert padded.i420 out.i420 --size 2x2 --stride 4
holds out.i420 "01 02 03 04 a1 b1"
bytes "01 02 ee 03 04 ee a1 b1 ee" >padded.m420
works convert padded.m420 out.i420 --size 2x2 --stride 3
holds out.i420 "01 02 03 04 a1 b1"
bytes "01 02 03 ee 04 05 06 ee" >padded.rgb24
works convert padded.rgb24 out.rgb24 --size 1x2 --stride 4
holds out.rgb24 "01 02 03 04 05 06"
"$korframe" info padded.rgb24 --size 1x2 --stride 4 | grep -q '^frames       1$' || fail "info with padding"
refuses 2 "--stride: plane 2 of 2x2 i420 has 1 rows of 1 bytes; expected at least as much, not 1 rows of 0" convert padded.i420 none.i420 --size 2x2 --stride 2,0
refuses 2 "--stride: 2 numbers, but rgb24 has 1 plane" convert padded.rgb24 none.rgb24 --size 1x2 --stride 4,4
refuses 2 "--stride: expected the bytes from row to row of each plane, for example 1344 or 328,168,168, not '4,x'" convert padded.i420 none.i420 --size 2x2 --stride 4,x
refuses 2 "--stride: c422.y4m does not hold raw frames" convert c422.y4m none.i420 --stride 4
refuses 1 "padded.i420: frame 1 is truncated: 4 of its 16 bytes are missing" convert padded.i420 none.i420 --size 2x2 --stride 4,4,4
absent none.i420 none.rgb24 none.y4m none.png

finish
