# One picture or clip over another, at any position.
. "$(dirname "$0")/common.sh"
mkdir pictures
"$fixtures" pictures || exit 1

# A background of 100s and an overlay of 200s; half and half is 150, hexadecimal 96.
{ repeat 16 64; repeat 8 64; } >back.i420
{ repeat 4 c8; repeat 2 c8; } >over.i420
# lay PLANES ARGUMENTS...: a 2x2 overlay on a 4x4 background.
lay() {
    planes=$1
    shift
    works blend back.i420 over.i420 out.i420 --size 4x4 --overlay-size 2x2 "$@"
    holds out.i420 "$planes"
}
row="64 64 64 64"
lay "c8 c8 64 64 c8 c8 64 64 $row $row c8 64 64 64 c8 64 64 64"
lay "$row $row $row $row 64 64 64 64 64 64 64 64" --alpha 0
lay "$row 64 96 96 64 64 96 96 64 $row 96 64 64 64 96 64 64 64" --at 1,1 --alpha 128
lay "96 64 64 64 $row $row $row 96 64 64 64 96 64 64 64" --at -1,-1 --alpha 128
lay "$row $row $row 64 64 64 96 64 64 64 96 64 64 64 96" --at 3,3 --alpha 128
lay "$row $row 64 64 c8 c8 64 64 c8 c8 64 64 64 c8 64 64 64 c8" --at 2,2

# At an odd negative column chroma is placed at half of it, rounded down: at -3 a six-column overlay with chroma 1, 2, 3
# shows luma from column 3 and chroma from column 2.
bytes "01 02 03 04 05 06 01 02 03 04 05 06  11 12 13  21 22 23" >wide.i420
{ repeat 12 00; repeat 6 00; } >six.i420
works blend six.i420 wide.i420 out.i420 --size 6x2 --overlay-size 6x2 --at -3,0
holds out.i420 "04 05 06 00 00 00 04 05 06 00 00 00 13 13 00 23 23 00"
works blend six.i420 wide.i420 out.i420 --size 6x2 --overlay-size 6x2 --at -2,0
holds out.i420 "03 04 05 06 00 00 03 04 05 06 00 00 12 13 00 22 23 00"
works blend six.i420 wide.i420 out.i420 --size 6x2 --overlay-size 6x2 --at 3,0
holds out.i420 "00 00 00 01 02 03 00 00 00 01 02 03 00 11 12 00 21 22"

# The overlay's own alpha: opaque red beside transparent white, over black. Chroma uses the mean of both alphas.
bytes "10 10 10 10 80 80" >black.i420
works blend black.i420 pictures/alpha.png out.i420 --size 2x2 --alpha-channel
holds out.i420 "51 10 51 10 76 9b"
bytes "ff 00 00 ff ff ff ff 00 ff 00 00 ff ff ff ff 00" >over.rgba
works blend black.i420 over.rgba out.i420 --size 2x2 --overlay-size 2x2 --alpha-channel
holds out.i420 "51 10 51 10 76 9b"
works blend black.i420 pictures/rgb.png out.i420 --size 2x2
holds out.i420 "51 51 51 51 5a ef"

# Clips and pictures on either side.
frames() {
    grep -ac FRAME "$1"
}
clip() {
    for _ in $(seq "$1"); do cat "$2"; done
}
clip 3 back.i420 >three.i420
clip 2 over.i420 >two.i420
works blend three.i420 two.i420 out.y4m --size 4x4 --overlay-size 2x2 --rate 50
[ "$(frames out.y4m)" -eq 3 ] || fail "clip over clip: $(frames out.y4m) frames"
[ "$(head -1 out.y4m)" = "YUV4MPEG2 W4 H4 F50:1 Ip A1:1 C420jpeg XCOLORRANGE=LIMITED" ] || fail "$(head -1 out.y4m)"
works blend three.i420 over.i420 out.y4m --size 4x4 --overlay-size 2x2
[ "$(frames out.y4m)" -eq 3 ] || fail "one frame over a clip: $(frames out.y4m) frames"
works blend pictures/rgb.png two.i420 out.y4m --overlay-size 2x2
[ "$(frames out.y4m)" -eq 2 ] || fail "a clip over a picture: $(frames out.y4m) frames"
works blend pictures/rgb.png pictures/grey.png out.png
works blend pictures/rgb.png pictures/grey.png out-%d.png --dither 1 --seed 3
[ -s out-1.png ] || fail "no out-1.png"
"$korframe" blend - two.i420 - --from i420 --size 4x4 --overlay-size 2x2 <three.i420 >piped.y4m || fail "blend in a pipe"
[ "$(frames piped.y4m)" -eq 3 ] || fail "blend in a pipe: $(frames piped.y4m) frames"
head -c 50 three.i420 >broken.i420
refuses 1 "broken.i420: frame 3 is truncated: 22 of its 24 bytes are missing; the 2 frames before it are in kept.partial.y4m" blend broken.i420 over.i420 kept.y4m --size 4x4 --overlay-size 2x2
[ "$(frames kept.partial.y4m)" -eq 2 ] || fail "kept.partial.y4m holds $(frames kept.partial.y4m) frames"

# Errors.
refuses 2 "--at 4,0: the 2x2 overlay lies outside the 4x4 background; expected X from -1 to 3 and Y from -1 to 3" blend back.i420 over.i420 none.y4m --size 4x4 --overlay-size 2x2 --at 4,0
refuses 2 "--at 0,-2: the 2x2 overlay lies outside the 4x4 background; expected X from -1 to 3 and Y from -1 to 3" blend back.i420 over.i420 none.y4m --size 4x4 --overlay-size 2x2 --at 0,-2
refuses 2 "--at: expected column and row, for example 16,-8, not '5'" blend back.i420 over.i420 none.y4m --size 4x4 --overlay-size 2x2 --at 5
refuses 2 "--alpha: expected a whole number from 0 to 255, not '256'" blend back.i420 over.i420 none.y4m --size 4x4 --overlay-size 2x2 --alpha 256
refuses 2 "--alpha excludes --alpha-channel; see korframe blend --help" blend back.i420 pictures/alpha.png none.y4m --size 4x4 --alpha 9 --alpha-channel
refuses 1 "over.i420: is i420 and has no alpha channel" blend back.i420 over.i420 none.y4m --size 4x4 --overlay-size 2x2 --alpha-channel
refuses 2 "-: only one of background and overlays can come from standard input" blend - - none.y4m
repeat 48 80 >back.i444
refuses 1 "back.i444: is i444; blending works on i420 only" blend back.i444 over.i420 none.y4m --size 4x4 --overlay-size 2x2
refuses 1 "gone.png: cannot be opened" blend back.i420 gone.png none.y4m --size 4x4
absent none.y4m

finish
