# Pictures of every kind become planes; damaged or absurd ones are refused.
. "$(dirname "$0")/common.sh"
mkdir pictures
"$fixtures" pictures || exit 1

red="51 51 51 51 5a ef"
white="eb eb eb eb 80 80"
half="7e 7e 7e 7e 80 80" # half of white over black is 128, which gives (110 * 128 >> 7) + 16

# Kinds of PNG.
works convert pictures/rgb.png out.i420
holds out.i420 "$red"
works convert pictures/rgb16.png out.i420
holds out.i420 "$red"
works convert pictures/palette.png out.i420
holds out.i420 "$red"
works convert pictures/grey.png out.i420
holds out.i420 "$white"
works convert pictures/grey1.png out.i420
holds out.i420 "$white"
warns "pictures/half.png: has transparent pixels, which are composited over black" convert pictures/half.png out.i420
holds out.i420 "$half"
# Transparent white is composited over black, so chroma is that of red beside black: the average of 255 and 0 is 128.
warns "pictures/alpha.png: has transparent pixels" convert pictures/alpha.png out.i420
holds out.i420 "51 10 51 10 6d b8"

# Where both sides have alpha it is kept; elsewhere its loss is reported once, and only if a pixel is transparent.
printf 'P6\n2 2\n255\n' >start
works convert pictures/alpha.png out.rgba
holds out.rgba "ff 00 00 ff ff ff ff 00 ff 00 00 ff ff ff ff 00"
works convert pictures/alpha.png out.png
works compare pictures/alpha.png out.png
works convert out.rgba out.png --size 2x2
works compare pictures/alpha.png out.png
warns "pictures/alpha.png: has transparent pixels, which are composited over black" convert pictures/alpha.png out.ppm
{ cat start; bytes "ff 00 00 00 00 00 ff 00 00 00 00 00"; } >expected
same out.ppm expected
warns "pictures/alpha.png: has transparent pixels" convert pictures/alpha.png out.rgb
# A colour of a palette may be transparent, too.
warns "pictures/key.png: has transparent pixels" convert pictures/key.png out.rgb
holds out.rgb "ff 00 00 00 00 00 ff 00 00 00 00 00"
works convert pictures/key.png out.rgba
holds out.rgba "ff 00 00 ff 00 00 ff 00 ff 00 00 ff 00 00 ff 00"
works convert pictures/alpha.png out.rgb --quiet
warns "pictures/alpha.png: has transparent pixels" convert pictures/alpha.png out.png --mirror
cat pictures/alpha.png pictures/half.png >two.png
warns "two.png: has transparent pixels" convert two.png out.y4m
warns "pictures/alpha.png: has transparent pixels, which are composited over black; own as its opacity blends by their alpha" convert pictures/rgb.png out.png --blend pictures/alpha.png
warns "pictures/alpha.png: has transparent pixels, which are composited over black; --alpha-channel blends by their alpha" blend pictures/rgb.png pictures/alpha.png out.png
works convert pictures/rgb.png out.png --blend pictures/alpha.png:0,0,own
bytes "01 02 03 ff 04 05 06 ff" >opaque.rgba
works convert opaque.rgba opaque.png --size 2x1
works convert opaque.png out.y4m

# Samples of 16 bits are the same in an interlaced file, and rounded: v * 255 / 65535.
for name in deep deep-alpha; do
    works compare pictures/$name.png pictures/$name-interlaced.png
done
works compare pictures/deep.png pictures/deep.ppm
works convert pictures/deep.png a.ppm
works convert pictures/deep-interlaced.png b.ppm
same a.ppm b.ppm

# Samples are used as they are stored, whatever gamma the file gives; a gamma far from that of sRGB is worth a word.
works convert pictures/srgb.png a.i420
warns "pictures/linear.png: has a gamma of 1.00 (gAMA), which is ignored; samples are used as stored" convert pictures/linear.png b.i420
same a.i420 b.i420

# Kinds of JPEG.
for name in grey white; do
    works convert pictures/$name.jpg out.i420
    { repeat 256 eb; repeat 128 80; } >expected
    same out.i420 expected
done
works convert pictures/black-progressive.jpg out.i420
{ repeat 256 10; repeat 128 80; } >expected
same out.i420 expected

# A few bytes can ask for the time of a whole picture again and again.
works convert pictures/scans-500.jpg out.i420
same out.i420 expected
refuses 1 "pictures/scans-501.jpg: is a JPEG file that cannot be decoded (more than 500 scans)" convert pictures/scans-501.jpg none.y4m

# Some cameras append further images and say so in the first.
warns "pictures/indexed.jpg: holds further images (MPF), which are ignored" convert pictures/indexed.jpg out.i420
works convert pictures/white.jpg expected.i420
same out.i420 expected.i420

# All orientations of the camera: the shades of the quadrants in reading order, and the size. Orientations unknown to Exif
# count as upright.
orientation() {
    works convert pictures/rotated-"$1".jpg out.ppm
    works convert pictures/rotated-"$1".jpg out.i420
    [ "$(sed -n 2p out.ppm)" = "$2" ] || fail "orientation $1: size $(sed -n 2p out.ppm)"
    width=${2% *}
    last=$((width * ${2#* }))
    shades=""
    for at in 0 $((width - 1)) $((last - width)) $((last - 1)); do
        shades="$shades $(od -An -v -tu1 -j $at -N 1 out.i420 | tr -d ' ')"
    done
    [ "$shades" = " $3" ] || fail "orientation $1: '$shades', expected ' $3'"
}
orientation 0 "32 16" "222 170 119 67"
orientation 1 "32 16" "222 170 119 67"
orientation 2 "32 16" "170 222 67 119"
orientation 3 "32 16" "67 119 170 222"
orientation 4 "32 16" "119 67 222 170"
orientation 5 "16 32" "222 119 170 67"
orientation 6 "16 32" "119 222 67 170"
orientation 7 "16 32" "67 170 119 222"
orientation 8 "16 32" "170 67 222 119"
orientation 9 "32 16" "222 170 119 67"

# Kinds of PPM, recognised by content whatever the name.
printf 'P3\n# red and more\n2 2 255\n255 0 0 255 0 0\n255 0 0 255 0 0\n' >plain.picture
works convert plain.picture out.i420
holds out.i420 "$red"
{ printf 'P6 2 2 255\n'; bytes "ff 00 00 ff 00 00 ff 00 00 ff 00 00"; } >binary.ppm
works convert binary.ppm out.i420
holds out.i420 "$red"
{ printf 'P5 2 2 65535\n'; bytes "ff ff ff ff ff ff ff ff"; } >deep.pgm
works convert deep.pgm out.i420
holds out.i420 "$white"
printf 'P2 2 2 15 15 15 15 15' >plain.pgm
works convert plain.pgm out.i420
holds out.i420 "$white"
"$korframe" convert - - --to i420 <binary.ppm >out.i420 2>stderr.txt || fail "standard input to standard output"
holds out.i420 "$red"

# Every byte order gives the same planes. Red, green, blue; white, black, red; black, red, green.
{ printf 'P6 3 3 255\n'; bytes "ff 00 00 00 ff 00 00 00 ff  ff ff ff 00 00 00 ff 00 00  00 00 00 ff 00 00 00 ff 00"; } >nine.ppm
for order in bgra rgba argb abgr; do
    works convert nine.ppm $order.i420 --order $order
done
# Luma of each pixel, then chroma of the block averages: red green / white black (128, 128, 64); blue over red
# (128, 0, 128); black beside red (128, 0, 0); green alone.
holds bgra.i420 "51 8f 29 eb 10 51 10 51 8f 64 a5 6d 36 84 af b8 22"
for order in rgba argb abgr; do
    same bgra.i420 $order.i420
done
works convert nine.ppm flipped.i420 --flip
# Black red / white black (128, 64, 64); green over red (128, 128, 0), red beside green the same; blue alone.
holds flipped.i420 "10 51 8f eb 10 51 51 8f 29 76 48 48 ef 9c 89 89 6e"

# The Y4M header describes the planes.
works convert nine.ppm out.y4m
printf 'YUV4MPEG2 W3 H3 F25:1 Ip A1:1 C420jpeg XCOLORRANGE=LIMITED XKORMATRIX=601\nFRAME\n' >expected
cat bgra.i420 >>expected
same out.y4m expected

# A picture over the limit is refused by its header. What is never shown is never in memory.
refuses 1 "pictures/huge.png: size 16384x16384 is too large; the limit is 67108864 pixels, and --max-pixels raises it" info pictures/huge.png
refuses 1 "nine.ppm: size 3x3 is too large; the limit is 8 pixels" convert nine.ppm none.y4m --max-pixels 8
refuses 1 "nine.ppm: size 3x3 is too large" convert pictures/rgb.png none.y4m --blend nine.ppm --max-pixels 8
refuses 1 "nine.ppm: size 3x3 is too large" blend pictures/rgb.png nine.ppm none.y4m --max-pixels 8
refuses 2 "nine.ppm: size 3x3 is too large" compare pictures/rgb.png nine.ppm --max-pixels 8
works convert nine.ppm out.y4m --max-pixels 9
refuses 2 "--max-pixels: expected a whole number from 1 to 268435456, not '0'" convert nine.ppm none.y4m --max-pixels 0
absent none.y4m
if (ulimit -v 100000 && "$korframe" --version >/dev/null 2>&1); then
    (ulimit -v 100000 && "$korframe" info pictures/large.png >info.txt 2>stderr.txt) || fail "info of 8192x8192 in 100 MB: $(cat stderr.txt)"
    grep -q '^frames       1$' info.txt || fail "info of 8192x8192: $(cat info.txt)"
else
    skips "a limit on memory, which a sanitizer does not run under"
fi

# An input without end, which 10 MB stand for, is not read any further than its picture goes.
if [ -r /dev/zero ]; then
    mkfifo endless
    { printf 'P6 300 200 255\n'; head -c 10000000 /dev/zero 2>/dev/null && : >taken; } >endless &
    refuses 1 "standard input: has bytes that are no picture behind picture 1, from byte 180015 on; the frame before it is in kept.partial.y4m" convert - kept.y4m <endless
    wait
    { printf 'P6 4 #'; head -c 10000000 /dev/zero 2>/dev/null && : >taken; } >endless &
    refuses 1 "standard input: has no number within 65536 bytes from byte 4; expected a PPM file" convert - none.y4m <endless
    wait
    absent taken
fi

# Damaged pictures.
cp out.y4m before.y4m
head -c 60 pictures/rgb.png >cut.png
refuses 1 "cut.png: is a damaged PNG file" convert cut.png out.y4m
sed 's/IDAT/IDAX/' pictures/rgb.png >corrupt.png
refuses 1 "corrupt.png: is a damaged PNG file" convert corrupt.png out.y4m
head -c 300 pictures/white.jpg >cut.jpg
refuses 1 "cut.jpg: is a JPEG file that cannot be decoded (Premature end of JPEG file); expected a complete 8-bit JPEG" convert cut.jpg out.y4m
size=$(wc -c <pictures/white.jpg)
head -c $((size - 40)) pictures/white.jpg >end.jpg
refuses 1 "end.jpg: is a JPEG file that cannot be decoded (Premature end of JPEG file); expected a complete 8-bit JPEG" convert end.jpg out.y4m
refuses 1 "pictures/cmyk.jpg: is a CMYK JPEG file, meant for print; expected greyscale, RGB or YCbCr" convert pictures/cmyk.jpg out.y4m
printf 'P6 2 2 255\nabc' >cut.ppm
refuses 1 "cut.ppm: is truncated: 9 of the 12 bytes for 2x2 pixels are missing" convert cut.ppm out.y4m
printf 'P6 2 2' >head.ppm
refuses 1 "head.ppm: ends before the maximum sample; expected a complete PPM file" convert head.ppm out.y4m
printf 'P3 2 two 255' >word.ppm
refuses 1 "word.ppm: has no number at byte 5 of the PPM file; expected up to six digits for the height" convert word.ppm out.y4m
printf 'P3 1 1 9\n9 10 9' >over.ppm
refuses 1 "over.ppm: has a sample of 10; its PPM header allows at most 9" convert over.ppm out.y4m
printf 'P6 1 1 65536\nabcdef' >maximum.ppm
refuses 1 "maximum.ppm: has a maximum sample of 65536; PPM allows 1 to 65535" convert maximum.ppm out.y4m
printf 'P6 0 4 255\n' >empty.ppm
refuses 1 "empty.ppm: size 0x4 is empty" convert empty.ppm out.y4m
printf 'P6 32769 1 255\n' >wide.ppm
refuses 1 "wide.ppm: size 32769x1 is too large; the limit is 32768 on each side" convert wide.ppm out.y4m
printf 'P6 32768 32768 255\n' >huge.ppm
refuses 1 "huge.ppm: size 32768x32768 is too large; the limit is 268435456 pixels" convert huge.ppm out.y4m
printf 'P6 999999999 1 255\n' >digits.ppm
refuses 1 "digits.ppm: has no number at byte 3 of the PPM file; expected up to six digits for the width" convert digits.ppm out.y4m
: >nothing.png
refuses 1 "nothing.png: is empty" convert nothing.png out.y4m
printf 'GIF89a' >other.gif
refuses 1 "other.gif: is not a PNG, JPEG, PPM or Y4M file; for raw frames add --from LAYOUT and --size WIDTHxHEIGHT" convert other.gif out.y4m
same out.y4m before.y4m

finish
