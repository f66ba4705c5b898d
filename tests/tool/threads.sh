# Frames on several threads, in all ways in which they meet; most useful under ThreadSanitizer.
. "$(dirname "$0")/common.sh"

# Forty frames of 64x64, each of one shade, and an overlay that ends earlier.
for shade in 10 20 30 40 50 60 70 80; do repeat 6144 $shade; done >clip.i420
for _ in 1 2 3 4 5; do cat clip.i420; done >long.i420
works convert clip.i420 over.y4m --size 64x64 --frames 1-3 --crop 16x16+0+0

# Converted with noise of a seed and without, blended, encoded as pictures: the bytes are those of one thread.
both() {
    output=$1
    shift
    works "$@" "one-$output" --jobs 1
    works "$@" "four-$output" --jobs 4
}
both out.bgra convert long.i420 --size 64x64 --dither 2 --seed 7
same one-out.bgra four-out.bgra
both out.y4m convert long.i420 --size 64x64 --rotate 90 --blend over.y4m:8,8,99 --render yuy2 --dither 1 --seed 7
same one-out.y4m four-out.y4m
both out-%02d.png convert clip.i420 --size 64x64
for number in 1 2 3 4 5 6 7 8; do same "one-out-0$number.png" "four-out-0$number.png"; done
works blend long.i420 over.y4m one.y4m --size 64x64 --jobs 1
works blend long.i420 over.y4m four.y4m --size 64x64 --jobs 4
same one.y4m four.y4m
works convert long.i420 noise.rgb --size 64x64 --dither 1 --jobs 4

# An input that breaks off, and an output that does.
{ cat long.i420; printf x; } >broken.i420
refuses 1 "the 40 frames before it are in none.partial.i420" convert broken.i420 none.i420 --size 64x64 --jobs 4
same none.partial.i420 long.i420
if [ -w /dev/full ]; then
    refuses 1 "/dev/full: cannot be written" convert long.i420 /dev/full --to bgra --size 64x64 --jobs 4
fi

finish
