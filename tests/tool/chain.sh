# Steps in the order given, and frames on several threads.
. "$(dirname "$0")/common.sh"
mkdir pictures
"$fixtures" pictures || exit 1

# 2x2 over 4x4, 200s over 100s.
{ repeat 16 64; repeat 8 64; } >back.i420
{ printf 'YUV4MPEG2 W2 H2\nFRAME\n'; repeat 6 c8; } >over.y4m
row="64 64 64 64"
chain() {
    planes=$1
    shift
    works convert back.i420 out.i420 --size 4x4 "$@"
    holds out.i420 "$planes"
}

# Position and opacity of an overlay.
chain "c8 c8 64 64 c8 c8 64 64 $row $row c8 64 64 64 c8 64 64 64" --blend over.y4m
chain "$row $row 64 64 c8 c8 64 64 c8 c8 64 64 64 c8 64 64 64 c8" --blend over.y4m:2,2
chain "96 64 64 64 $row $row $row 96 64 64 64 96 64 64 64" --blend over.y4m:-1,-1,128
# Colons in names; several overlays, later ones on top.
cp over.y4m a:b.y4m
cp over.y4m a:1,1.y4m
chain "c8 c8 64 64 c8 c8 64 64 $row $row c8 64 64 64 c8 64 64 64" --blend a:b.y4m
chain "$row $row 64 64 c8 c8 64 64 c8 c8 64 64 64 c8 64 64 64 c8" --blend ./a:1,1.y4m:2,2
chain "c8 c8 64 64 c8 c8 64 64 64 64 c8 c8 64 64 c8 c8 c8 64 64 c8 c8 64 64 c8" --blend over.y4m:0,0 --blend over.y4m:2,2
# Before and after a rotation.
chain "64 64 c8 c8 64 64 c8 c8 $row $row 64 c8 64 64 64 c8 64 64" --blend over.y4m --rotate 90
chain "c8 c8 64 64 c8 c8 64 64 $row $row c8 64 64 64 c8 64 64 64" --rotate 90 --blend over.y4m
chain "$row $row c8 c8 64 64 c8 c8 64 64 64 64 c8 64 64 64 c8 64" --mirror --blend over.y4m:0,0 --flip
# Opaque red beside transparent white, by its own alpha.
bytes "10 10 10 10 80 80" >black.i420
works convert black.i420 out.i420 --size 2x2 --blend pictures/alpha.png:0,0,own
holds out.i420 "51 10 51 10 76 9b"
# A picture lasts as long as a clip blended over it, in both commands.
{ cat over.y4m; printf 'FRAME\n'; repeat 6 30; } >two.y4m
works convert pictures/rgb.png out.y4m --blend two.y4m:0,0,128
[ "$(grep -ac FRAME out.y4m)" -eq 2 ] || fail "a clip over a picture: $(grep -ac FRAME out.y4m) frames"
works blend pictures/rgb.png two.y4m blend.y4m --alpha 128
same out.y4m blend.y4m

# Rendering as a step: later steps capture again. Red survives RGB and packing unchanged.
bytes "51 51 51 51 5a ef" >red.i420
works convert red.i420 out --size 2x2 --render uyvy
holds out "5a 51 ef 51 5a 51 ef 51"
works convert red.i420 out.uyvy --size 2x2 --render yuy2
holds out.uyvy "5a 51 ef 51 5a 51 ef 51"
"$korframe" convert red.i420 - --size 2x2 --mirror --render rgb24 >out.rgb || fail "rendered to standard output"
holds out.rgb "fb 00 00 fb 00 00 fb 00 00 fb 00 00"
# BGRA for a BGRA output is rendered once, and twice if a step follows.
works convert red.i420 out.bgra --size 2x2 --render bgra
holds out.bgra "00 00 fb ff 00 00 fb ff 00 00 fb ff 00 00 fb ff"
works convert red.i420 out.i420 --size 2x2 --render bgra --rotate 90
works convert out.bgra again.i420 --size 2x2 --rotate 90
same out.i420 again.i420
works convert red.i420 out.i420 --size 2x2 --render yuy2 --render uyvy --render yuy2
same out.i420 red.i420
works convert red.i420 out.ppm --size 2x2 --render rgba
works convert red.i420 plain.ppm --size 2x2
same out.ppm plain.ppm
# After RGB the range is limited, whatever it was.
{ printf 'YUV4MPEG2 W2 H2 XCOLORRANGE=FULL\nFRAME\n'; cat red.i420; } >full.y4m
works convert full.y4m out.y4m --render bgra
head -1 out.y4m | grep -q 'XCOLORRANGE=LIMITED XKORMATRIX=601$' || fail "range after RGB: $(head -1 out.y4m)"
"$korframe" convert full.y4m out.y4m --blend over.y4m 2>stderr.txt || fail "limited over full range"
grep -qF "warning: over.y4m: is limited range on a full-range background" stderr.txt || fail "two ranges: $(cat stderr.txt)"
works convert full.y4m out.y4m --mirror
same out.y4m "$(printf 'YUV4MPEG2 W2 H2 F25:1 I? A0:0 C420jpeg XCOLORRANGE=FULL\nFRAME\n' | cat - red.i420 >expected; echo expected)"

# Noise before another step comes from the filter, before rendering from the renderer.
{ repeat 4096 80; repeat 2048 80; } >grey.i420
works convert grey.i420 filtered.i420 --size 64x64 --dither 2 --seed 5
works convert grey.i420 out.i420 --size 64x64 --dither 2 --flip --flip --seed 5
same out.i420 filtered.i420
works convert grey.i420 out.i420 --size 64x64 --dither 2 --rotate 90 --seed 5
works convert filtered.i420 rotated.i420 --size 64x64 --rotate 90
same out.i420 rotated.i420
works convert grey.i420 own.rgb --size 64x64 --dither 2 --seed 5
works convert grey.i420 step.rgb --size 64x64 --dither 2 --render rgb24 --seed 5
same own.rgb step.rgb
works convert grey.i420 out.rgb --size 64x64 --dither 2 --flip --flip --seed 5
works convert filtered.i420 filtered.rgb --size 64x64
same out.rgb filtered.rgb
cmp -s out.rgb own.rgb && fail "the renderer's noise is the filter's"
works convert grey.i420 out.i420 --size 64x64 --dither off --mirror --dither off
same out.i420 grey.i420

# Any number of jobs gives the same bytes, with noise, overlays and pictures.
for shade in 10 30 50 70 90 b0 d0 eb 20 40 60; do repeat 6144 $shade; done >clip.i420
steps="--dither 2 --mirror --blend two.y4m:1,1,99 --render bgra --dither 1 --rotate 90 --dither 0 --seed 11"
for output in out.y4m out.yuy2 out.bgra; do
    # shellcheck disable=SC2086
    works convert clip.i420 one-$output --size 64x64 $steps
    for jobs in 2 3 7 16 0; do
        # shellcheck disable=SC2086
        works convert clip.i420 many-$output --size 64x64 $steps --jobs $jobs
        same one-$output many-$output
    done
done
# shellcheck disable=SC2086
works convert clip.i420 one-%02d.png --size 64x64 $steps
# shellcheck disable=SC2086
works convert clip.i420 many-%02d.png --size 64x64 $steps --jobs 4
for number in 01 02 03 04 05 06 07 08 09 10 11; do
    same one-$number.png many-$number.png
done
works blend clip.i420 two.y4m one.y4m --size 64x64 --dither 2 --seed 3
works blend clip.i420 two.y4m many.y4m --size 64x64 --dither 2 --seed 3 --jobs 3
same one.y4m many.y4m
{ cat clip.i420; bytes "01 02"; } >broken.i420
refuses 1 "broken.i420: frame 12 is truncated: 6142 of its 6144 bytes are missing; the 11 frames before it are in kept.partial.i420" convert broken.i420 kept.i420 --size 64x64 --jobs 4
same kept.partial.i420 clip.i420
if [ -w /dev/full ]; then
    refuses 1 "/dev/full: cannot be written: No space left on device" convert clip.i420 /dev/full --to y4m --size 64x64 --jobs 4
fi

# Errors.
refuses 2 "--jobs: expected a whole number from 0 to 256, not '257'" convert back.i420 none.i420 --size 4x4 --jobs 257
refuses 2 "--jobs: expected a whole number from 0 to 256, not '-1'" convert back.i420 none.i420 --size 4x4 --jobs -1
refuses 2 "--render: expected yuy2, uyvy, yuv2, m420, bgra, rgba, argb, abgr, rgb24 or bgr24, not 'nv12'" convert back.i420 none.i420 --size 4x4 --render nv12
refuses 1 "--render yuy2: width 3 is odd; yuy2 stores pixels in pairs, so the width must be even" convert back.i420 none.i420 --size 3x4 --render yuy2
refuses 2 "--blend over.y4m:4,0: the 2x2 overlay lies outside the 4x4 background; expected X from -1 to 3 and Y from -1 to 3" convert back.i420 none.i420 --size 4x4 --blend over.y4m:4,0
refuses 2 "--blend over.y4m:1,1,256: expected an opacity from 0 to 255, or own for the overlay's alpha channel, not '256'" convert back.i420 none.i420 --size 4x4 --blend over.y4m:1,1,256
refuses 2 "--blend over.y4m:1,x: expected column and row, for example 16,-8, not '1,x'" convert back.i420 none.i420 --size 4x4 --blend over.y4m:1,x
refuses 2 "--blend :1,1: expected the name of a picture or clip and optionally its position, for example logo.png:16,16, not ':1,1'" convert back.i420 none.i420 --size 4x4 --blend :1,1
refuses 1 "gone.png: cannot be opened" convert back.i420 none.i420 --size 4x4 --blend gone.png
refuses 1 "over.y4m: is i420 and has no alpha channel" convert back.i420 none.i420 --size 4x4 --blend over.y4m:0,0,own
refuses 2 "back.i420: raw i420 frames carry no size; for an overlay of raw frames use korframe blend" convert back.i420 none.i420 --size 4x4 --blend back.i420
refuses 2 "-: only one of background and overlays can come from standard input" convert - none.i420 --blend -
repeat 48 80 >back.i444
refuses 1 "back.i444: is i444; blending works on i420 only" convert back.i444 none.i444 --size 4x4 --blend over.y4m
refuses 2 "--dither: the filter works on i420 only, and the frames are i444" convert back.i444 none.bgra --size 4x4 --dither 1 --flip
refuses 2 "--seed 5: a seed has no effect without noise; add --dither 0, 1 or 2" convert back.i420 none.i420 --size 4x4 --dither off --seed 5
printf '1 0 0\n0 1 0\n0 0 1\n' >own.txt
refuses 2 "--matrix own.txt: a matrix file works in one direction, and this converts from RGB to YUV and back; use two runs with a Y4M file in between" convert back.i420 none.i420 --size 4x4 --render bgra --matrix own.txt
absent none.i420 none.i444 none.bgra

finish
