# Pictures one after another: in one file or pipe, in numbered files, in files that a pattern matches.
. "$(dirname "$0")/common.sh"
mkdir pictures
"$fixtures" pictures || exit 1

# Twelve frames of 16x8, as Y4M, as numbered pictures and as a stream of pictures.
for shade in 10 20 30 40 50 60 70 80 90 a0 b0 c0; do repeat 192 $shade; done >clip.i420
works convert clip.i420 clip.y4m --size 16x8
works convert clip.i420 clip-%02d.png --size 16x8
works convert clip.i420 clip-%02d.ppm --size 16x8
cat clip-*.png >stream.png
cat clip-*.ppm >stream.ppm
for _ in 1 2 3; do cat pictures/white.jpg; done >stream.jpg
for _ in 1 2 3; do printf 'P3\n2 1 9 # two pixels\n9 9 9  0 0 0\n'; done >plain.ppm
works convert clip-%02d.png expected.y4m
[ "$(grep -ac FRAME expected.y4m)" -eq 12 ] || fail "numbered: $(grep -ac FRAME expected.y4m) frames"

frames() {
    "$korframe" info "$1" >info.txt 2>stderr.txt || fail "info $1: $(cat stderr.txt)"
    grep -qx "frames       $2" info.txt || fail "$1: $(tail -1 info.txt), expected $2"
    grep -qx "container    $3" info.txt || fail "$1: $(grep container info.txt), expected $3"
}
frames stream.png 12 "PNG pictures"
frames stream.jpg 3 "JPEG pictures"
frames stream.ppm 12 "PPM pictures"
frames plain.ppm 3 "PPM pictures"
frames clip-01.png 1 "PNG picture"
frames clip-%02d.png 12 "PNG pictures"

# Nothing is dropped, in a file or a pipe, and all ways give the same.
for input in stream.png stream.ppm 'clip-*.png' 'clip-[01][0-9].ppm' clip-%02d.ppm ./clip-%02d.png "$PWD/clip-%02d.png"; do
    works convert "$input" out.y4m
    same out.y4m expected.y4m
done
for input in stream.png stream.ppm; do
    # The pipe gives the pictures in pieces.
    { head -c 50 $input; sleep 0.1; tail -c +51 $input; } | "$korframe" convert - - >out.y4m 2>stderr.txt || fail "$input in a pipe: $(cat stderr.txt)"
    same out.y4m expected.y4m
done
cat stream.png stream.ppm >mixed
frames mixed 24 "PNG pictures"
works compare 'clip-*.png' clip-%02d.ppm
works convert clip-%02d.png out-%03d.ppm
[ -s out-012.ppm ] || fail "no out-012.ppm"
absent out-013.ppm
# Numbers need not begin at 1, but have to be consecutive. A name that exists stands for itself.
mkdir later
cp clip-07.png later/7.png
cp clip-08.png later/8.png
cp clip-10.png later/10.png
cp clip-11.png later/011.png
refuses 1 "later/9.png: is missing; later/8.png and later/10.png are there" convert later/%d.png none.y4m
cp clip-09.png later/9.png
frames later/%d.png 4 "PNG pictures"
cp clip-01.png "clip-%02d.png"
frames clip-%02d.png 1 "PNG picture"
rm "clip-%02d.png"
cp clip-01.png "clip*"
frames 'clip*' 1 "PNG picture"
rm "clip*"

# As overlays and backgrounds.
works blend clip.y4m 'later/?.png' out.y4m --at 2,2
works blend clip.y4m stream.png again.y4m
works convert clip-%02d.png out.y4m --blend 'later/?.png:2,2'
works blend pictures/rgb.png later/%d.png longest.y4m
[ "$(grep -ac FRAME longest.y4m)" -eq 4 ] || fail "pictures over a picture: $(grep -ac FRAME longest.y4m) frames"

# What follows the last picture and is none is an error, and so is a picture of another size or a damaged one. The frames
# before are kept.
{ cat stream.png; printf 'x'; } >behind.png
refuses 1 "behind.png: has bytes that are no picture behind picture 12, from byte $(wc -c <stream.png) on; the 12 frames before it are in none.partial.y4m" convert behind.png none.y4m
same none.partial.y4m expected.y4m
{ cat clip-01.png pictures/rgb.png; } >sizes.png
refuses 1 "sizes.png, picture 2: is 2x2; expected 16x8, the size of the first picture; the frame before it is in" convert sizes.png none.y4m
head -c $(($(wc -c <stream.png) - 4)) stream.png >cut.png
refuses 1 "cut.png, picture 12: is a damaged PNG file (it ends too early); expected an intact one; the 11 frames before it are in" convert cut.png none.y4m
head -c $(($(wc -c <stream.ppm) - 4)) stream.ppm >cut.ppm
refuses 1 "cut.ppm, picture 12: is truncated: 4 of the 384 bytes for 16x8 pixels are missing" info cut.ppm
grep -qx "frames       11, then the file breaks off" stdout.txt || fail "info of cut.ppm: $(cat stdout.txt)"
head -c $(($(wc -c <stream.jpg) - 4)) stream.jpg >cut.jpg
refuses 1 "cut.jpg, picture 3: is a JPEG file that cannot be decoded (Premature end of JPEG file)" info cut.jpg
: >later/10.png
refuses 1 "later/10.png: is empty; expected a PNG, JPEG or PPM picture; the 3 frames before it are in" convert later/%d.png none.y4m
cp clip.y4m later/10.png
refuses 1 "later/10.png: is not a picture; expected PNG, JPEG or PPM (P2, P3, P5, P6)" convert later/%d.png none.y4m
refuses 1 "gone-%d.png: matches no file" convert gone-%d.png none.y4m
refuses 1 "gone*.png: matches no file" convert 'gone*.png' none.y4m
refuses 2 "clip-%d-%d.png: has two places for a number; expected one, for example frame-%04d.png" convert clip-%d-%d.png none.y4m
refuses 2 "clip-*.png: stands for several files, which must be pictures, and --from is for raw frames" convert 'clip-*.png' none.y4m --from i420 --size 16x8
absent none.y4m

finish
