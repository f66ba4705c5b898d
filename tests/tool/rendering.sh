# From planes to RGB in every byte order, by each matrix, with and without noise.
. "$(dirname "$0")/common.sh"

# Red, as capture makes it.
bytes "51 51 51 51 5a ef" >red.i420
render() {
    expected=$1
    shift
    works convert red.i420 out.raw --size 2x2 "$@"
    holds out.raw "$expected"
}
render "fb 00 00 ff fb 00 00 ff fb 00 00 ff fb 00 00 ff" --to rgba
render "00 00 fb ff 00 00 fb ff 00 00 fb ff 00 00 fb ff" --to bgra
render "ff fb 00 00 ff fb 00 00 ff fb 00 00 ff fb 00 00" --to argb
render "ff 00 00 fb ff 00 00 fb ff 00 00 fb ff 00 00 fb" --to abgr
render "fb 00 00 fb 00 00 fb 00 00 fb 00 00" --to rgb24
render "00 00 fb 00 00 fb 00 00 fb 00 00 fb" --to bgr24
render "ff 1a 00 ff 1a 00 ff 1a 00 ff 1a 00" --to rgb24 --matrix 709
render "ff ff 1a 00 ff ff 1a 00 ff ff 1a 00 ff ff 1a 00" --to argb --matrix 709

# A matrix from a file: luma alone, minus 16, rounded down.
printf '# grey\n256 0 0\n\n  +256\t0 -0 # green\n256 0 0' >grey.txt
render "41 41 41 41 41 41 41 41 41 41 41 41" --to rgb24 --matrix grey.txt
render "41 41 41 ff 41 41 41 ff 41 41 41 ff 41 41 41 ff" --to bgra --matrix grey.txt

# An odd size is rendered to its last pixel.
bytes "10 51 eb 51 91 10 eb 10 91 80 80 80 80 80 80 80 80" >odd.i420
works convert odd.i420 out.rgb --size 3x3
holds out.rgb "00 00 00 4b 4b 4b fe fe fe 4b 4b 4b 95 95 95 00 00 00 fe fe fe 00 00 00 95 95 95"
works convert odd.i420 out.ppm --size 3x3
{ printf 'P6\n3 3\n255\n'; cat out.rgb; } >expected
same out.ppm expected
works convert odd.i420 out.png --size 3x3
works convert out.png again.ppm
same again.ppm out.ppm
bytes "eb 80 80" >one.i420
works convert one.i420 one.rgb --size 1x1
holds one.rgb "fe fe fe"

# Planes of 4:4:4: red and white.
bytes "51 eb 5a 80 ef 80" >two.i444
works convert two.i444 out.rgb --size 2x1
holds out.rgb "fb 00 00 fe fe fe"
works convert two.i444 out.bgra --size 2x1 --matrix 709
holds out.bgra "00 1a ff ff fe ff fe ff"

# Noise changes the output, repeats with the same seed, and differs between seeds and between frames.
{ repeat 4096 80; repeat 2048 80; } >grey.i420
cat grey.i420 grey.i420 >clip.i420
works convert grey.i420 plain.rgb --size 64x64
for level in 0 1 2; do
    for kind in rgb bgra yuy2 yuv2 i420 y4m ppm; do
        works convert grey.i420 a.$kind --size 64x64 --dither $level --seed 7
        works convert grey.i420 b.$kind --size 64x64 --dither $level --seed 7
        works convert grey.i420 c.$kind --size 64x64 --dither $level --seed 8
        works convert grey.i420 d.$kind --size 64x64 --dither off
        same a.$kind b.$kind
        cmp -s a.$kind c.$kind && fail "$kind at level $level: seeds 7 and 8 give the same"
        cmp -s a.$kind d.$kind && fail "$kind at level $level: no noise"
    done
done
works convert grey.i420 off.rgb --size 64x64 --dither off
same off.rgb plain.rgb
works convert clip.i420 noisy.i420 --size 64x64 --dither 2 --seed 7
head -c 6144 noisy.i420 >first
tail -c 6144 noisy.i420 >second
cmp -s first second && fail "two frames have the same noise"
works convert grey.i420 alone.i420 --size 64x64 --dither 2 --seed 7
same first alone.i420
works convert grey.i420 a.rgb --size 64x64 --dither 2
works convert grey.i420 b.rgb --size 64x64 --dither 2
cmp -s a.rgb b.rgb && fail "without a seed two runs are the same"
# The filter reaches the last column and row of an odd size.
{ repeat 4225 80; repeat 2178 80; } >odd65.i420
works convert odd65.i420 a.i420 --size 65x65 --dither 2 --seed 1
[ "$(wc -c <a.i420)" -eq 6403 ] || fail "the filter changed the size"
tail -c +4161 a.i420 | head -c 65 >last
repeat 65 80 >flat
cmp -s last flat && fail "the last row has no noise"

# Full range is brought to limited range first.
{ printf 'YUV4MPEG2 W2 H2 XCOLORRANGE=FULL\nFRAME\n'; cat red.i420; } >full.y4m
works convert full.y4m out.rgb
holds out.rgb "ed 0f 0e ed 0f 0e ed 0f 0e ed 0f 0e"

# The largest error of that is what the man page says. Red depends on Y and V alone, blue on Y and U.
stated=$(tr '\n' ' ' <"$3/tools/korframe/man/korframe.1" | sed -n 's/.*costs at most \([0-9]*\) levels.*/\1/p')
if command -v python3 >/dev/null; then
    python3 -c '
import sys
samples = [bytes(range(256)) * 256, bytes(value for value in range(256) for _ in range(256))]
sys.stdout.buffer.write(samples[0] + 2 * samples[1])' >all.i444
    for matrix in 601 709; do
        works convert all.i444 all.rgb24 --size 256x256 --range full --matrix $matrix
        found=$(python3 -c '
import sys
red, blue = {"601": (0.299, 0.114), "709": (0.2126, 0.0722)}[sys.argv[1]]
green = 1 - red - blue
largest = 0
with open("all.rgb24", "rb") as file:
    for chroma in range(-128, 128):
        for luma in range(256):
            r = luma + 2 * (1 - red) * chroma
            b = luma + 2 * (1 - blue) * chroma
            exact = (r, (luma - red * r - blue * b) / green, b)
            for value, rendered in zip(exact, file.read(3)):
                largest = max(largest, abs(min(max(round(value), 0), 255) - rendered))
print(largest)' $matrix)
        [ "$found" = "$stated" ] || fail "full range by $matrix is up to $found levels off; the man page says '$stated'"
    done
else
    skips "the largest error of full range: python3 is not installed"
fi

# Errors.
wrong_matrix() {
    printf '%b' "$1" >wrong.txt
    refuses 1 "--matrix wrong.txt: $2" convert red.i420 none.rgb --size 2x2 --matrix wrong.txt
}
wrong_matrix "" "line 1, column 1: expected three rows, found 0"
wrong_matrix "1 2 3\n4 5 6\n" "line 3, column 1: expected three rows, found 2"
wrong_matrix "1 2 3\n4 5\n7 8 9\n" "line 2, column 4: the row ends after 2; expected 3 numbers"
wrong_matrix "1 2 3\n4 5 6 7\n" "line 2, column 7: a fourth number; expected 3 in a row"
wrong_matrix "1 2 3\n4 5 6\n7 8 9\n\n # x\n0\n" "line 6, column 1: a fourth row; expected 3"
wrong_matrix "1 2 3\n4  x5 6\n" "line 2, column 4: expected a whole number from -65536 to 65536, where 256 is 1.0, not 'x5'"
wrong_matrix "1 2 3.0\n" "line 1, column 5: expected a whole number from -65536 to 65536, where 256 is 1.0, not '3.0'"
wrong_matrix "1 -65537 3\n" "line 1, column 3: expected a whole number from -65536 to 65536, where 256 is 1.0, not '-65537'"
wrong_matrix "1 - 3\n" "line 1, column 3: expected a whole number from -65536 to 65536, where 256 is 1.0, not '-'"
wrong_matrix "99999999999999999999 1 1\n" "line 1, column 1: expected a whole number from -65536 to 65536, where 256 is 1.0, not '99999999999999999999'"
refuses 1 "--matrix bt2020: cannot be opened: No such file or directory" convert red.i420 none.rgb --size 2x2 --matrix bt2020
refuses 2 "--matrix grey.txt: a matrix file renders i420 only; for i444 use 601 or 709" convert two.i444 none.rgb --size 2x1 --matrix grey.txt
refuses 2 "--matrix 709: no matrix is used because nothing is converted between RGB and YUV" convert red.i420 none.yuy2 --size 2x2 --matrix 709
refuses 2 "--matrix grey.txt: a matrix file works in one direction, and this converts from RGB to YUV and back; use two runs with a Y4M file in between" convert out.png none.png --flip --matrix grey.txt
refuses 2 "--dither: expected off, 0 (weakest), 1 or 2 (strongest), not '3'" convert red.i420 none.rgb --size 2x2 --dither 3
refuses 2 "--seed 5: a seed has no effect without noise; add --dither 0, 1 or 2" convert red.i420 none.rgb --size 2x2 --seed 5
refuses 2 "--seed: expected a whole number from 0 to 999999999999999999, not '-5'" convert red.i420 none.rgb --size 2x2 --seed -5 --dither 1
refuses 2 "--dither: the filter works on i420 only, and the frames are i444" convert two.i444 none.i444 --size 2x1 --dither 1
absent none.rgb none.yuy2 none.png none.i444

finish
