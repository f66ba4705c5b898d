# Raw layouts and Y4M as input, flips and rotations, streams of frames, and inputs that break off.
. "$(dirname "$0")/common.sh"

# Two rows of four pixels, the same in each layout.
luma="01 02 03 04 05 06 07 08"
bytes "01 a0 02 b0 03 a2 04 b2  05 a1 06 b1 07 a4 08 b4" >packed.yuy2
bytes "a0 01 b0 02 a2 03 b2 04  a1 05 b1 06 a4 07 b4 08" >packed.uyvy
bytes "$luma a1 b1 a3 b3" >planes.nv12
bytes "$luma b1 a1 b3 a3" >planes.nv21
bytes "$luma a1 b1 a3 b3" >blocks.m420
bytes "$luma a1 a3 b1 b3" >planes.i420
inputs="packed.yuy2 packed.uyvy planes.nv12 planes.nv21 blocks.m420 planes.i420"

# gives PLANES STEPS...: every layout gives these planes.
gives() {
    planes=$1
    shift
    for input in $inputs; do
        works convert $input out.i420 --size 4x2 "$@"
        actual=$(hex out.i420)
        [ "$actual" = "$planes" ] || fail "$input $*: '$actual', expected '$planes'"
    done
}

gives "$luma a1 a3 b1 b3"
gives "$luma a1 a3 b1 b3" --rotate 0
gives "05 06 07 08 01 02 03 04 a1 a3 b1 b3" --flip
gives "04 03 02 01 08 07 06 05 a3 a1 b3 b1" --mirror
gives "05 01 06 02 07 03 08 04 a1 a3 b1 b3" --rotate 90
gives "08 07 06 05 04 03 02 01 a3 a1 b3 b1" --rotate 180
gives "04 08 03 07 02 06 01 05 a3 a1 b3 b1" --rotate 270
# The order of the steps matters.
gives "01 05 02 06 03 07 04 08 a1 a3 b1 b3" --flip --rotate 90
gives "08 04 07 03 06 02 05 01 a3 a1 b3 b1" --rotate 90 --flip
gives "08 07 06 05 04 03 02 01 a3 a1 b3 b1" --flip --mirror
gives "$luma a1 a3 b1 b3" --rotate 90 --rotate 180 --rotate 90
gives "$luma a1 a3 b1 b3" --flip --rotate 90 --mirror --rotate 270

# Planar 4:2:2: each pair of chroma rows becomes its rounded mean, also bottom row first; a single last row stays.
bytes "01 02 03 04 05 06 07 08 09  a0 a2 a1 a4 a6 a9  b0 b2 b1 b4 b6 b9" >odd.i422
works convert odd.i422 out.i420 --size 3x3
holds out.i420 "01 02 03 04 05 06 07 08 09 a1 a3 a6 a9 b1 b3 b6 b9"
works convert odd.i422 out.i420 --size 3x3 --flip
holds out.i420 "07 08 09 04 05 06 01 02 03 a4 a7 a0 a2 b4 b7 b0 b2"
{ printf 'YUV4MPEG2 W3 H3 F25:1 C422 XYSCSS=422 XCOLORRANGE=LIMITED\nFRAME\n'; cat odd.i422; } >c422.y4m
works convert c422.y4m out.y4m --to y4m:i420
{ printf 'YUV4MPEG2 W3 H3 F25:1 I? A0:0 C420mpeg2 XCOLORRANGE=LIMITED\nFRAME\n'; bytes "01 02 03 04 05 06 07 08 09 a1 a3 a6 a9 b1 b3 b6 b9"; } >expected
same out.y4m expected

# The last row of an odd height keeps its chroma.
bytes "01 a0 02 b0  05 a1 06 b1  09 a6 0a b6" >odd.yuy2
works convert odd.yuy2 out.i420 --size 2x3
holds out.i420 "01 02 05 06 09 0a a1 a6 b1 b6"
works convert odd.yuy2 out.i420 --size 2x3 --flip
holds out.i420 "09 0a 05 06 01 02 a4 a0 b4 b0"
works convert odd.yuy2 out.i420 --size 2x3 --rotate 90
holds out.i420 "09 05 01 0a 06 02 a6 a1 b6 b1"
bytes "01 02 03 04 05 06 07 08 09 a1 b1 a2 b2 a3 b3 a4 b4" >odd.nv12
works convert odd.nv12 out.i420 --size 3x3
holds out.i420 "01 02 03 04 05 06 07 08 09 a1 a2 a3 a4 b1 b2 b3 b4"
works convert odd.nv12 out.i420 --size 3x3 --mirror
holds out.i420 "03 02 01 06 05 04 09 08 07 a2 a1 a4 a3 b2 b1 b4 b3"

# Yuv2: full-range luma, signed chroma.
bytes "00 80 ff 7f 00 80 ff 7f" >signed.yuv2
works convert signed.yuv2 out.i420 --size 2x2
holds out.i420 "10 eb 10 eb 0f f0"
bytes "10 eb 10 eb 80 10" >unsigned.i420
works convert unsigned.i420 out.yuv2 --size 2x2
holds out.yuv2 "10 00 eb 81 10 00 eb 81"

# Outputs: packed, and planes of 4:4:4.
works convert planes.i420 out.yuy2 --size 4x2
holds out.yuy2 "01 a1 02 b1 03 a3 04 b3 05 a1 06 b1 07 a3 08 b3"
works convert planes.i420 out.uyvy --size 4x2
holds out.uyvy "a1 01 b1 02 a3 03 b3 04 a1 05 b1 06 a3 07 b3 08"
works convert unsigned.i420 odd.out --to uyvy --size 2x2 --rotate 90
holds odd.out "80 10 10 10 80 eb 10 eb"
bytes "01 02 03 04 05 06 11 12 13 14 15 16 21 22 23 24 25 26" >full.i444
works convert full.i444 out.i444 --size 3x2 --rotate 90
holds out.i444 "04 01 05 02 06 03 14 11 15 12 16 13 24 21 25 22 26 23"
# For an odd height, packing repeats the last row.
works convert odd.yuy2 mid.i420 --size 2x3
works convert mid.i420 out.yuy2 --size 2x3
holds out.yuy2 "01 a1 02 b1 05 a1 06 b1 09 a6 0a b6"

# Y4M: fields of the header are kept, adjusted for rotations; missing ones become unknown.
{ printf 'YUV4MPEG2 H2 W4 F30000:1001 Ib A4:3 C420mpeg2 XYSCSS=420MPEG2 XCOLORRANGE=FULL Zfuture\nFRAME\n'; cat planes.i420; printf 'FRAME Ippp XZ\n'; cat planes.i420; } >in.y4m
works convert in.y4m out.y4m
{ printf 'YUV4MPEG2 W4 H2 F30000:1001 Ib A4:3 C420mpeg2 XYSCSS=420MPEG2 XCOLORRANGE=FULL\nFRAME\n'; cat planes.i420; printf 'FRAME\n'; cat planes.i420; } >expected
same out.y4m expected
works convert in.y4m out.y4m --flip --rate 24
[ "$(head -1 out.y4m)" = "YUV4MPEG2 W4 H2 F24:1 It A4:3 C420mpeg2 XYSCSS=420MPEG2 XCOLORRANGE=FULL" ] || fail "flipped: $(head -1 out.y4m)"
refuses 1 "in.y4m: is interlaced (Ib), and rotating by 90 would turn its fields into columns; deinterlace it first" convert in.y4m x.y4m --rotate 90
# If each frame has its own field order, that is kept, and the clip cannot be flipped.
sed 's/ Ib / Im /' in.y4m >mixed.y4m
works convert mixed.y4m out.y4m --mirror
[ "$(grep -ac 'FRAME Ippp XZ$' out.y4m)" -eq 1 ] || fail "the fields of a frame are lost"
refuses 1 "mixed.y4m: is interlaced frame by frame (Im), and turning it upside down would swap the fields of each; deinterlace it first" convert mixed.y4m x.y4m --flip
refuses 1 "mixed.y4m: is interlaced (Im), and rotating by 270 would turn its fields into columns; deinterlace it first" convert mixed.y4m x.y4m --rotate 270
sed 's/ Ib / Ip /' in.y4m >progressive.y4m
works convert progressive.y4m out.y4m --rotate 270
[ "$(head -1 out.y4m)" = "YUV4MPEG2 W2 H4 F30000:1001 Ip A3:4 C420mpeg2 XYSCSS=420MPEG2 XCOLORRANGE=FULL" ] || fail "rotated: $(head -1 out.y4m)"
{ printf 'YUV4MPEG2 W3 H2 C444\nFRAME\n'; cat full.i444; } >full.y4m
works convert full.y4m out.y4m
{ printf 'YUV4MPEG2 W3 H2 F25:1 I? A0:0 C444\nFRAME\n'; cat full.i444; } >expected
same out.y4m expected
works convert packed.yuy2 out.y4m --size 4x2 --rate 60000:1001
[ "$(head -1 out.y4m)" = "YUV4MPEG2 W4 H2 F60000:1001 Ip A1:1 C420mpeg2 XCOLORRANGE=LIMITED" ] || fail "packed: $(head -1 out.y4m)"

# Luma alone gets grey chroma.
{ printf 'YUV4MPEG2 W3 H1 F25:1 Cmono XYSCSS=400 XCOLORRANGE=FULL\nFRAME\nabcFRAME\ndef'; } >mono.y4m
works convert mono.y4m out.y4m
{ printf 'YUV4MPEG2 W3 H1 F25:1 I? A0:0 C420jpeg XCOLORRANGE=FULL\nFRAME\nabc'; repeat 4 80; printf 'FRAME\ndef'; repeat 4 80; } >expected
same out.y4m expected
"$korframe" info mono.y4m | grep -qx 'container    Y4M of luma alone (Cmono), read with grey chroma' || fail "info of luma alone"
head -c $(($(wc -c <mono.y4m) - 1)) mono.y4m >broken.y4m
refuses 1 "broken.y4m: frame 2 is truncated: 1 of its 3 bytes are missing" info broken.y4m

# Streams through pipes, and numbered pictures.
cat packed.yuy2 packed.yuy2 packed.yuy2 | "$korframe" convert - - --from yuy2 --size 4x2 2>stderr.txt >out.y4m || fail "a stream through a pipe"
[ ! -s stderr.txt ] || fail "a stream printed: $(cat stderr.txt)"
[ "$(grep -ac FRAME out.y4m)" -eq 3 ] || fail "a stream of three has $(grep -ac FRAME out.y4m)"
"$korframe" convert - - --to i420 <out.y4m >out.i420 || fail "a stream back"
cat planes.i420 planes.i420 planes.i420 >expected
same out.i420 expected
works convert out.y4m "100% %03d.ppm"
for number in 001 002 003; do
    [ -s "100% $number.ppm" ] || fail "no picture $number"
done
absent "100% 004.ppm"
works convert out.y4m %d.png
[ -s 1.png ] && [ -s 3.png ] || fail "no 1.png or 3.png"
refuses 1 "one.png: is a single picture, but there are more frames; put a number in the name, for example frame-%04d.png" convert out.y4m one.png
absent one.png

# A truncated frame is reported by number, and the frames before it lie under a name of their own.
{ cat packed.yuy2 packed.yuy2; bytes "01 a0 02"; } >broken.yuy2
refuses 1 "broken.yuy2: frame 3 is truncated: 13 of its 16 bytes are missing; the 2 frames before it are in kept.partial.i420" convert broken.yuy2 kept.i420 --size 4x2
cat planes.i420 planes.i420 >expected
same kept.partial.i420 expected
head -c $(($(wc -c <in.y4m) - 1)) in.y4m >broken.y4m
refuses 1 "broken.y4m: frame 2 is truncated: 1 of its 12 bytes are missing; the frame before it is in kept.partial.y4m" convert broken.y4m kept.y4m
[ "$(grep -ac FRAME kept.partial.y4m)" -eq 1 ] || fail "kept.partial.y4m holds $(grep -ac FRAME kept.partial.y4m) frames"
{ cat in.y4m; printf 'frame\n'; } >broken.y4m
refuses 1 "broken.y4m: frame 3 does not begin with FRAME at byte $(wc -c <in.y4m)" convert broken.y4m kept.y4m
[ "$(grep -ac FRAME kept.partial-2.y4m)" -eq 2 ] || fail "kept.partial-2.y4m holds $(grep -ac FRAME kept.partial-2.y4m) frames"
absent kept.i420 kept.y4m
head -c 3 packed.yuy2 >short.yuy2
refuses 1 "short.yuy2: frame 1 is truncated: 13 of its 16 bytes are missing" convert short.yuy2 none.i420 --size 4x2
absent none.i420

# Bad headers and command lines.
header() {
    printf '%s\n' "$1" >header.y4m
    refuses 1 "header.y4m: $2" convert header.y4m none.y4m
}
header "YUV4MPEG2 W4 H2" "has a Y4M header but no frames"
header "YUV4MPEG2 H2" "has no width (W) in its Y4M header"
header "YUV4MPEG2 W4" "has no height (H) in its Y4M header"
header "YUV4MPEG2 W-4 H2" "has the field W-4 in its Y4M header; expected a number of pixels after W"
header "YUV4MPEG2 W4 H2x" "has the field H2x in its Y4M header"
header "YUV4MPEG2 W0 H2" "size 0x2 is empty"
header "YUV4MPEG2 W99999999999999999 H99999999999999999" "size 99999999999999999x99999999999999999 is too large; the limit is 32768 on each side"
header "YUV4MPEG2 W4 H2 C411" "has the field C411 in its Y4M header; expected C420jpeg, C420mpeg2, C420paldv, C420, C422, C444 or Cmono, all of 8 bits"
header "YUV4MPEG2 W4 H2 C420p10" "has the field C420p10"
header "YUV4MPEG2 W4 H2 F25" "has the field F25 in its Y4M header; expected a ratio after F, for example 25:1"
header "YUV4MPEG2 W4 H2 F25:0" "has the field F25:0 in its Y4M header; expected a ratio after F, for example 25:1, or 0:0 if it is unknown"
header "YUV4MPEG2 W4 H2 F0:1" "has the field F0:1"
header "YUV4MPEG2 W4 H2 A1:0" "has the field A1:0"
header "YUV4MPEG2 W4 H2 A1:x" "has the field A1:x"
{ printf 'YUV4MPEG2 '; repeat 5000 41; } >header.y4m
refuses 1 "header.y4m: has a Y4M header that does not end; expected a line of at most 4096 bytes" convert header.y4m none.y4m
: >empty.yuy2
refuses 1 "empty.yuy2: is empty; expected frames of 16 bytes" convert empty.yuy2 none.i420 --size 4x2
refuses 2 "packed.yuy2: raw yuy2 frames carry no size; add --size WIDTHxHEIGHT" convert packed.yuy2 none.i420
refuses 1 "packed.yuy2: width 3 is odd; yuy2 stores pixels in pairs, so the width must be even" convert packed.yuy2 none.i420 --size 3x2
refuses 1 "signed.yuv2: width 1 is odd" convert signed.yuv2 none.i420 --size 1x2
refuses 1 "blocks.m420: height 3 is odd; m420 stores rows in pairs, so the height must be even" convert blocks.m420 none.i420 --size 2x3
refuses 1 "none.uyvy: width 3 is odd; uyvy stores pixels in pairs, so the width must be even" convert odd.nv12 none.uyvy --size 3x3
refuses 2 "--from: expected i420, i422, i444, nv12, nv21, yuy2, uyvy, yuv2, m420, bgra, rgba, argb, abgr, rgb24 or bgr24, not 'yuv9'" convert packed.yuy2 none.i420 --from yuv9 --size 4x2
refuses 2 "--size: expected WIDTHxHEIGHT, for example 1280x720, not '4*2'" convert packed.yuy2 none.i420 --size 4*2
refuses 2 "in.y4m: --size is for raw frames, and this file has a size of its own; for raw frames add --from LAYOUT" convert in.y4m none.i420 --size 4x2
refuses 2 "--rotate: expected 0, 90, 180 or 270 degrees, not '45'" convert packed.yuy2 none.i420 --size 4x2 --rotate 45
refuses 2 "--rate: expected frames per second, for example 25, 30000:1001 or 29.97, not '0'" convert packed.yuy2 none.y4m --size 4x2 --rate 0
refuses 2 "--order rgba: packed.yuy2 is not a picture; for raw frames give the byte order by --from" convert packed.yuy2 none.y4m --size 4x2 --order rgba
refuses 2 "--to yuy2: none.png is named as a picture" convert in.y4m none.png --to yuy2
absent none.i420 none.y4m none.nv12 none.i444 none.png none.uyvy

finish
